#pragma once

#include <QPushButton>
#include <QString>

#include <cstdint>

namespace NS_QT {

/// A button with the style's sign for information or a warning, which shows a message
/// when it is pressed. GUI thread only.
class InfoButton : public QPushButton {
    Q_OBJECT

public:
    enum Kind : int32_t { Information = 1, Warning = 2 };

    /// The kind 2 is a warning, any other an information. The title also is the button's
    /// accessible name.
    InfoButton(int32_t kind, const QString& title, const QString& text, QWidget* parent = nullptr);

public slots:
    /// Shows the message and returns when it has been read. The button may be deleted
    /// meanwhile.
    void showMessage();

protected:
    void changeEvent(QEvent* event) override;

private:
    bool isWarning() const { return d_kind == Warning; }
    void updateIcon();

    int32_t d_kind;
    QString d_title;
    QString d_text;
};

} // namespace NS_QT
