#include "forms.h"

#include <gtest/gtest.h>

TEST(Forms, AreCompiled) { expectEveryWidget(Form()); }

QString inWords(const QMetaProperty& property, const QVariant& value) {
    if (property.isEnumType())
        return property.enumerator().valueToKey(value.toInt());
    if (value.userType() == QMetaType::QPixmap)
        return QString::number(value.value<QPixmap>().width());
    if (value.userType() == QMetaType::QIcon)
        return QString::number(value.value<QIcon>().actualSize({99, 99}).width());
    return value.canConvert<QString>() ? value.toString() : value.toStringList().join(", ");
}

void expectEveryWidget(const QWidget& form) {
    const struct {
        const char *object, *className, *properties;
    } rows[] = {
        {"button", "QT_Button", "picture=32; hotStyle=Halo; opacity=0.5"},
        {"strip", "QT_ButtonStrip",
         "picture=32; buttonCount=2; buttonToolTips=Loop, Play once; checkable=true; "
         "exclusive=true"},
        {"slider", "NS_QT::SpinSlider", "maximum=50; pageStep=5; value=7"},
        {"fraction", "NS_QT::FractionSpinBox", "allowed=10, 400, 401; value=400"},
        {"numbers", "NS_QT::SmartComboBox", "currentText=Low; maxVisibleItems=3"},
        {"texts", "NS_QT::StringComboBox", "sizeAdjustPolicy=AdjustToContents"},
        {"link", "NS_QT::HyperlinkLabel", "linkColour=#ff0000; underline=false; italic=true"},
        {"plain", "NS_QT::HyperlinkLabel", "linkEnabled=false; plainColour=#0000ff"},
        {"icon", "NS_QT::IconWidget", "icon=32; sizeCode=Size32"},
        {"info", "NS_QT::InfoButton", "kind=Warning; title=Disk; message=It is full."},
    };
    for (const auto& row : rows) {
        const auto* const widget = form.findChild<QWidget*>(row.object);
        ASSERT_TRUE(widget != nullptr) << row.object;
        const QMetaObject& meta = *widget->metaObject();
        EXPECT_STREQ(meta.className(), row.className);
        for (const QString& expected : QString(row.properties).split("; ")) {
            const QByteArray name = expected.section('=', 0, 0).toLatin1();
            const QMetaProperty property = meta.property(meta.indexOfProperty(name));
            EXPECT_EQ(name + '=' + inWords(property, property.read(widget)), expected);
        }
    }
}
