#pragma once

#include <QPushButton>
#include <QString>

#include <cstdint>

namespace NS_QT {

/// A button with the style's sign for information or a warning, which shows a message
/// when it is pressed. GUI thread only.
class InfoButton : public QPushButton {
    Q_OBJECT
    Q_PROPERTY(Kind kind READ kind WRITE setKind NOTIFY kindChanged)
    Q_PROPERTY(QString title READ title WRITE setTitle NOTIFY titleChanged)
    Q_PROPERTY(QString message READ message WRITE setMessage NOTIFY messageChanged)

public:
    /// What the message is, and with it the icon.
    enum Kind : int32_t { Information = 1, Warning = 2 };
    Q_ENUM(Kind)

    /// An information without title and text.
    explicit InfoButton(QWidget* parent = nullptr);
    InfoButton(int32_t kind, const QString& title, const QString& text, QWidget* parent = nullptr);

    /// The kind 2 is a warning, any other an information.
    Kind kind() const { return static_cast<Kind>(d_kind); }

    /// The message's title. It also is the button's accessible name, unless the
    /// application gives another.
    QString title() const { return d_title; }

    /// The message's text; text() is the button's own, beside its sign.
    QString message() const { return d_text; }

public Q_SLOTS:
    /// Set the properties, and tell of a change.
    void setKind(int32_t kind);
    void setTitle(const QString& title);
    void setMessage(const QString& text);

    /// Shows the message and returns when it has been read. The button may be deleted
    /// meanwhile.
    void showMessage();

Q_SIGNALS:
    /// The property has another value now.
    void kindChanged();
    void titleChanged(const QString& title);
    void messageChanged(const QString& text);

protected:
    void changeEvent(QEvent* event) override;

private:
    bool isWarning() const { return d_kind == Warning; }
    QString nameFor(const QString& title) const;
    void updateIcon();

    int32_t d_kind;
    QString d_title;
    QString d_text;
};

} // namespace NS_QT
