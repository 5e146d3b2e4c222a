// An empty main window: what the toolkit's own start takes.
#include <QApplication>
#include <QMainWindow>

int main(int argc, char* argv[])
{
    const QApplication application(argc, argv);
    QMainWindow window;
    window.resize(640, 480);
    window.show();
    return QApplication::exec();
}
