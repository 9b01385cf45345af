// The least that a program with a window of this toolkit does: what a start can't take less than.

#include <QApplication>
#include <QWidget>

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    QWidget window;
    window.setStyleSheet("background: white");
    window.setFixedSize(618, 447);
    window.move(100, 100);
    window.show();
    return QApplication::exec();
}
