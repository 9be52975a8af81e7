#pragma once

#include <QColor>
#include <QLabel>
#include <QPalette>
#include <QPointer>

#include <array>

namespace NS_QT {

/// A label that looks and acts like a link while linkEnabled is set: a press of any mouse
/// button clicks it, and so do Enter and Space, since Tab leads to it.
///
/// Its colours follow the parent's palette, without a parent its own, its font the
/// parent's font; what is set here comes on top. Cursor and focus policy are set when
/// linkEnabled is, and are the application's from then on. Screen readers are told the
/// text without its markup. A slot of clicked() may delete the label. GUI thread only.
class HyperlinkLabel : public QLabel {
    Q_OBJECT
    Q_PROPERTY(bool linkEnabled READ linkEnabled WRITE setLinkEnabled NOTIFY linkAppearanceChanged)
    Q_PROPERTY(QColor linkColour READ linkColour WRITE setLinkColour NOTIFY linkAppearanceChanged)
    Q_PROPERTY(
        QColor plainColour READ plainColour WRITE setPlainColour NOTIFY linkAppearanceChanged)
    Q_PROPERTY(bool underline READ underline WRITE setUnderline NOTIFY linkAppearanceChanged)
    Q_PROPERTY(bool italic READ italic WRITE setItalic NOTIFY linkAppearanceChanged)

public:
    /// Without a text, or with one.
    explicit HyperlinkLabel(QWidget* parent = nullptr);
    explicit HyperlinkLabel(const QString& text, QWidget* parent = nullptr);

    /// On at first.
    bool linkEnabled() const { return d_linkEnabled; }
    void setLinkEnabled(bool enabled);

    /// The text's colour as a link; an invalid one, the default, is the palette's.
    QColor linkColour() const { return d_linkColour; }
    void setLinkColour(const QColor& colour) { change(d_linkColour, colour); }

    /// The text's colour otherwise; an invalid one, the default, is the palette's.
    QColor plainColour() const { return d_plainColour; }
    void setPlainColour(const QColor& colour) { change(d_plainColour, colour); }

    /// How the text looks as a link: underlined and upright at first.
    bool underline() const { return d_underline; }
    void setUnderline(bool underline) { change(d_underline, underline); }
    bool italic() const { return d_italic; }
    void setItalic(bool italic) { change(d_italic, italic); }

public Q_SLOTS:
    /// Emits clicked(), if the label is enabled and a link.
    void click();

Q_SIGNALS:
    /// By mouse, keyboard or `click`.
    void clicked();
    /// One of the properties of the link has another value now.
    void linkAppearanceChanged();

protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* object, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    /// The label, and a frame around the text while it has the focus.
    void paintEvent(QPaintEvent* event) override;

private:
    template <typename T>
    void change(T& member, const T& value) {
        if (member == value)
            return;
        member = value;
        updateAppearance();
        Q_EMIT linkAppearanceChanged();
    }
    void followParent();
    void setCursorAndFocusPolicy();
    void updateAppearance();
    QPalette basePalette();
    void followApplication();
    QRect textArea() const;
    Qt::Alignment textAlignment() const;
    QRect focusRect() const;
    QColor textColour(QPalette::ColorGroup group, const QPalette& palette) const;

    bool d_linkEnabled = true;
    bool d_underline = true;
    bool d_italic = false;
    bool d_updating = false;
    QColor d_linkColour;
    QColor d_plainColour;
    // Colours of the text by group: without a parent the label's own, the
    // application's at that time, and the one that is shown.
    struct TextColour {
        QColor own, application, shown;
    };
    std::array<TextColour, QPalette::NColorGroups> d_text;
    QPointer<QWidget> d_watchedParent;
};

} // namespace NS_QT
