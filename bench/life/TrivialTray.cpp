// A Qt program that shows an icon in the tray, and no more.

#include <QApplication>
#include <QIcon>
#include <QPixmap>
#include <QSystemTrayIcon>

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    QPixmap square(22, 22);
    square.fill(Qt::red);
    QSystemTrayIcon icon{QIcon(square)};
    icon.show();
    return QApplication::exec();
}
