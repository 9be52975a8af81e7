// What Qt alone needs for a window: a bare dialog with two line edits, the peer of the tool's start
// in bench_startup.

#include <QApplication>
#include <QDialog>
#include <QFormLayout>
#include <QLineEdit>

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    QDialog dialog;
    QFormLayout layout(&dialog);
    layout.addRow("NVR IP", new QLineEdit(&dialog));
    layout.addRow("Port", new QLineEdit(&dialog));
    return dialog.exec();
}
