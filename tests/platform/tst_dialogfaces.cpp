#include "common/Texts.h"
#include "faces/Face.h"
#include "faces/Look.h"
#include "faces/PlainFont.h"
#include "platform/BoxMessages.h"
#include "platform/DesktopDialogs.h"
#include "platform/DesktopFolderPicker.h"

#include <QApplication>
#include <QColorDialog>
#include <QDir>
#include <QFileDialog>
#include <QFontDialog>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QTreeView>
#include <QUrl>

#include <functional>

using namespace zib;

namespace {

QString names(const QList<QUrl>& urls)
{
    QStringList texts;
    for (const QUrl& url : urls)
        texts << url.toLocalFile();
    return texts.join(' ');
}

void sayFileBox(Words& words, const QFileDialog& box)
{
    words.say("box.kind", QString("accepts %1, files %2, view %3, options %4")
                              .arg(box.acceptMode())
                              .arg(box.fileMode())
                              .arg(box.viewMode())
                              .arg(static_cast<int>(box.options()), 0, 16));
    words.say("box.folder", box.directory().absolutePath());
    words.say("box.filters", box.nameFilters().join(" | "));
    words.say("box.sidebar", names(box.sidebarUrls()));
    if (const auto* list = box.findChild<QTreeView*>("treeView"))
        words.say("box.columns", QString("%1 %2 %3, precision %4")
                                     .arg(list->header()->sectionResizeMode(0))
                                     .arg(list->header()->sectionResizeMode(1))
                                     .arg(list->header()->sectionResizeMode(3))
                                     .arg(list->header()->resizeContentsPrecision()));
}

void sayMessageBox(Words& words, const QMessageBox& box)
{
    words.say("box.kind", QString("icon %1, buttons %2, format %3")
                              .arg(box.icon())
                              .arg(box.standardButtons(), 0, 16)
                              .arg(box.textFormat()));
    words.say("box.text", box.text());
    words.say("box.remark", box.informativeText());
    words.say("box.preset",
              box.defaultButton() ? QString::number(box.standardButton(box.defaultButton()), 16) : QString());
    for (const char* part : {"qt_msgboxex_icon_label", "qt_msgbox_label", "qt_msgbox_informativelabel"})
        if (const auto* label = box.findChild<QLabel*>(part))
            words.say(QString("box.") + part, QString("format %1, alignment %2, picture %3")
                                                  .arg(label->textFormat())
                                                  .arg(static_cast<int>(label->alignment()), 0, 16)
                                                  .arg(label->pixmap().isNull() ? "none" : "yes"));
}

/// What the toolkit's box is asked to be; how it looks is the toolkit's own.
Words wordsOf(const QWidget& window)
{
    Words words;
    words.say("box.name", window.objectName() + ", \"" + window.windowTitle() + "\", over " +
                              (window.parentWidget() ? window.parentWidget()->objectName() : "nothing"));
    if (const auto* box = qobject_cast<const QFileDialog*>(&window))
        sayFileBox(words, *box);
    else if (const auto* message = qobject_cast<const QMessageBox*>(&window))
        sayMessageBox(words, *message);
    else if (const auto* colors = qobject_cast<const QColorDialog*>(&window))
        words.say("box.color", QString("%1, options %2")
                                   .arg(colors->currentColor().name())
                                   .arg(static_cast<int>(colors->options()), 0, 16));
    else if (const auto* fonts = qobject_cast<const QFontDialog*>(&window))
        words.say("box.font", QString("%1 %2, options %3")
                                  .arg(fonts->currentFont().family())
                                  .arg(fonts->currentFont().pointSizeF())
                                  .arg(static_cast<int>(fonts->options()), 0, 16));
    return words;
}

/// Notes what the next modal box is, does something with it and closes it.
struct Watch
{
    Watch(Face& stages, const QString& name) : face(stages), title(name) { wait(); }
    void wait()
    {
        QTimer::singleShot(0, &timer, [this] {
            QWidget* box = QApplication::activeModalWidget();
            if (!box)
                return wait();
            face.stage(title, wordsOf(*box));
            box->close();
        });
    }

    Face& face;
    QString title;
    QObject timer;
};

} // namespace

/// The toolkit's boxes in words: what each of them is asked for.
class TestDialogFaces : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase()
    {
        dressUp();
        qputenv("HOME", m_home.path().toUtf8());
        qunsetenv("XDG_CONFIG_HOME");
        QVERIFY(QDir(m_home.path()).mkpath("Music") && QDir(m_home.path()).mkpath("below"));
        m_owner.setObjectName("owner");
        m_owner.show();
        m_owner.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&m_owner, 30'000));
    }

    void files_openedAndSaved()
    {
        Face face("boxes_files");
        face.replace(m_home.path(), "HOME");
        DesktopDialogs dialogs;
        using Request = FileDialogRequest;
        const QString filter = "Sounds (*.wav)|*.wav; *.mp3|All|*.*";
        for (const auto& [title, flags] : {std::pair{"any file", 0U},
                                           {"one that is there", Request::FileMustExist + 0U},
                                           {"several", Request::AllowMultiselect | Request::FileMustExist},
                                           {"several of any kind", Request::AllowMultiselect + 0U}}) {
            const Watch watch(face, title);
            const auto answer = dialogs.openFile(&m_owner, {.title = title,
                                                            .filter = filter,
                                                            .flags = flags,
                                                            .initialFolder = m_home.filePath("below/gone")});
            QVERIFY(!answer);
        }
        {
            const Watch watch(face, "saved");
            QVERIFY(!dialogs.saveFile(&m_owner,
                                      {.title = "Saved", .filter = {}, .initialFolder = m_home.path()}));
        }
        {
            const Watch watch(face, "a folder");
            QCOMPARE(DesktopFolderPicker().SHBrowseForFolderA(&m_owner, "Which?", m_home.filePath("Music")),
                     QString());
        }
        COMPARE_FACE(face);
    }

    void colorsAndFonts()
    {
        Face face("boxes_looks");
        DesktopDialogs dialogs;
        for (const char* title : {"A title", ""}) {
            const Watch watch(face, QString("colour ") + title);
            QVERIFY(!dialogs.chooseColor(&m_owner, title, QColor(10, 20, 30)));
        }
        for (const char* title : {"A title", ""}) {
            const Watch watch(face, QString("letters ") + title);
            QVERIFY(!dialogs.chooseFont(&m_owner, title, QFont(kPlainFont, 17)));
        }
        COMPARE_FACE(face);
    }

    void messages_ofEveryKind()
    {
        Face face("boxes_messages");
        BoxMessages messages;
        {
            const Watch watch(face, "information with a remark");
            messages.information(&m_owner, "<b>Text</b>", "<i>Remark</i>");
        }
        {
            const Watch watch(face, "critical");
            messages.critical(&m_owner, "Text");
        }
        {
            const Watch watch(face, "critical with a title");
            messages.critical(nullptr, "Text", "A title");
        }
        {
            const Watch watch(face, "plain");
            messages.plain(&m_owner, "Text");
        }
        for (const auto preset : {Messages::Answer::Yes, Messages::Answer::No, Messages::Answer::Cancel}) {
            const Watch watch(face, QString("question, preset %1").arg(static_cast<int>(preset)));
            QCOMPARE(messages.askYesNoCancel(&m_owner, "Text?", preset), Messages::Answer::Cancel);
        }
        COMPARE_FACE(face);
    }

private:
    QTemporaryDir m_home;
    QWidget m_owner;
};

QTEST_MAIN(TestDialogFaces)
#include "tst_dialogfaces.moc"
