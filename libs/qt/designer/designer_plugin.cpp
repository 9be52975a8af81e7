#include "designer_plugin.h"

#include "designer_icons.h"
#include "qt_button.h"
#include "qt_buttonstrip.h"
#include "qt_fractionspinbox.h"
#include "qt_hyperlinklabel.h"
#include "qt_iconwidget.h"
#include "qt_infobutton.h"
#include "qt_smartcombobox.h"
#include "qt_spinslider.h"

namespace designer {
namespace {

/// One widget as Designer lists it. `properties` is what a new one has, as in a form.
struct Entry {
    const char* className;
    const char* header;
    const char* label;
    const char* toolTip;
    const char* properties;
    Drawing drawing;
    QWidget* (*make)(QWidget* parent);
};

template <typename Widget>
QWidget* make(QWidget* parent) {
    return new Widget(parent);
}

constexpr const char* kLinkText = "<property name=\"text\"><string>Link</string></property>";
constexpr const char* kThreeButtons =
    "<property name=\"buttonCount\"><number>3</number></property>";

constexpr Entry kEntries[] = {
    {"QT_Button", "qt_button.h", "Picture Button", "A button that is a picture", "", &drawButton,
     &make<QT_Button>},
    {"QT_ButtonStrip", "qt_buttonstrip.h", "Button Strip",
     "A row of buttons that are parts of one picture", kThreeButtons, &drawButtonStrip,
     &make<QT_ButtonStrip>},
    {"NS_QT::SpinSlider", "qt_spinslider.h", "Spin Slider",
     "A slider and a spin box for the same number", "", &drawSpinSlider, &make<NS_QT::SpinSlider>},
    {"NS_QT::FractionSpinBox", "qt_fractionspinbox.h", "Fraction Spin Box",
     "A spin box that can be limited to a set of values", "", &drawFractionSpinBox,
     &make<NS_QT::FractionSpinBox>},
    {"NS_QT::SmartComboBox", "qt_smartcombobox.h", "Combo Box of Numbers",
     "A combo box whose items have numbers as keys", "", &drawSmartComboBox,
     &make<NS_QT::SmartComboBox>},
    {"NS_QT::StringComboBox", "qt_smartcombobox.h", "Combo Box of Texts",
     "A combo box whose items have texts as keys", "", &drawStringComboBox,
     &make<NS_QT::StringComboBox>},
    {"NS_QT::HyperlinkLabel", "qt_hyperlinklabel.h", "Link", "A label that acts like a link",
     kLinkText, &drawHyperlinkLabel, &make<NS_QT::HyperlinkLabel>},
    {"NS_QT::IconWidget", "qt_iconwidget.h", "Icon", "An icon in one of four sizes", "",
     &drawIconWidget, &make<NS_QT::IconWidget>},
    {"NS_QT::InfoButton", "qt_infobutton.h", "Message Button", "A button that shows a message", "",
     &drawInfoButton, &make<NS_QT::InfoButton>},
};

class CustomWidget : public QDesignerCustomWidgetInterface {
public:
    explicit CustomWidget(const Entry& entry) : d_entry(entry) {}

    QString name() const override { return d_entry.className; }
    QString group() const override { return "Orvistrand"; }
    QString toolTip() const override { return d_entry.toolTip; }
    QString whatsThis() const override { return d_entry.toolTip; }
    QString includeFile() const override { return d_entry.header; }
    QIcon icon() const override { return makeIcon(d_entry.drawing); }
    bool isContainer() const override { return false; }
    QWidget* createWidget(QWidget* parent) override { return d_entry.make(parent); }
    QString domXml() const override {
        QString object = name().section(QRegExp("::|QT_"), -1);
        object[0] = object[0].toLower();
        return QString("<ui language=\"c++\" displayname=\"%1\"><widget class=\"%2\" name=\"%3\">"
                       "%4</widget></ui>")
            .arg(d_entry.label, name(), object, d_entry.properties);
    }

private:
    const Entry& d_entry;
};

} // namespace

Collection::Collection() {
    for (const Entry& entry : kEntries)
        d_widgets.push_back(std::make_unique<CustomWidget>(entry));
}

QList<QDesignerCustomWidgetInterface*> Collection::customWidgets() const {
    QList<QDesignerCustomWidgetInterface*> widgets;
    for (const auto& widget : d_widgets)
        widgets.append(widget.get());
    return widgets;
}

} // namespace designer
