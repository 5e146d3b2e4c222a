// An empty main window: what the toolkit's own start takes. With an argument it has the least that a window
// of a program has: a text, a tool bar and a menu.
#include <QApplication>
#include <QLabel>
#include <QMainWindow>
#include <QMenuBar>
#include <QToolBar>

int main(int argc, char* argv[])
{
    const QApplication application(argc, argv);
    QMainWindow window;
    window.resize(640, 480);
    if (argc > 1) {
        window.setCentralWidget(new QLabel(QStringLiteral("Text")));
        window.addToolBar(QStringLiteral("Tools"));
        window.menuBar()->addMenu(QStringLiteral("File"));
    }
    window.show();
    return QApplication::exec();
}
