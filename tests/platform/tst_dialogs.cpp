#include "platform/BoxMessages.h"
#include "platform/DesktopDialogs.h"
#include "platform/DesktopFolderPicker.h"
#include "platform/FileBox.h"
#include "platform/NameIcons.h"

#include <QApplication>
#include <QColorDialog>
#include <QDir>
#include <QFile>
#include <QFontDialog>
#include <QHeaderView>
#include <QIcon>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QDateTime>
#include <QImage>
#include <QSettings>
#include <QTest>
#include <QFileSystemModel>
#include <QTimer>
#include <QTreeView>

#include <functional>

#include <sys/stat.h>

/// Boxes and common dialogs, driven while they are open.
class TestDialogs : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void box_ofAKind_hasItsIconTitleAndButtons_data();
    void box_ofAKind_hasItsIconTitleAndButtons();
    void box_withATitleOfItsOwn_showsIt();
    void box_withMarkup_showsItAsText();
    void box_withARemark_keepsItsTextAndShowsBothAsText();
    void box_withoutAnOwner_belongsToTheActiveWindow();
    void question_answeredOrClosed_givesTheAnswer_data();
    void question_answeredOrClosed_givesTheAnswer();
    void question_withAPresetAnswer_givesItToEnter();
    void filters_ofAText_becomeQtsOwn_data();
    void filters_ofAText_becomeQtsOwn();
    void openFile_ofOne_givesItsPath();
    void openFile_cancelled_isACancel();
    void openFile_listsCapitalsToo();
    void openFile_ofSeveral_givesFolderAndNames();
    void openFile_ofSeveralTypedWithTheirPaths_givesAll_data();
    void openFile_ofSeveralTypedWithTheirPaths_givesAll();
    void openFile_ofSeveralTypedButOneMissing_staysOpen();
    void openFile_ofNamesWithQuotes_losesNone_data();
    void openFile_ofNamesWithQuotes_losesNone();
    void openFile_ofMarkedFilesWithQuotes_givesThem();
    void openFile_ofNamesThatCannotBeToldApart_saysSoAndStaysOpen_data();
    void openFile_ofNamesThatCannotBeToldApart_saysSoAndStaysOpen();
    void openFile_ofSeveralFromSeveralFolders_givesPlainPaths();
    void openFile_ofSeveralButOne_givesItsPath();
    void openFile_ofAnAnswerTooLong_fails();
    void openFile_ofAMissingFile_staysOpen();
    void openFile_again_startsWhereTheLastWas();
    void openAndSaveBox_areOfTheirKind();
    void saveFile_ofAnyName_givesItAsTyped_data();
    void saveFile_ofAnyName_givesItAsTyped();
    void saveFile_deepInTheTree_givesTheWholePath();
    void saveFile_inAMissingFolder_saysSoAndStaysOpen();
    void saveFile_ofANameTooLong_saysSoAndStaysOpen_data();
    void saveFile_ofANameTooLong_saysSoAndStaysOpen();
    void saveFile_ofOneNameInQuotes_isThatName();
    void colorAndFontBox_givenATitle_bearIt();
    void color_chosen_isTheAnswer();
    void color_cancelled_isACancel();
    void font_chosen_isTheAnswer();
    void font_thatIsNotInstalled_isKeptUnlessAnotherIsChosen();
    void folder_picked_isTheAnswer();
    void folder_withQuotesInItsName_isTheAnswer();
    void folder_cancelled_isEmpty();
    void folder_picker_startsWhereItIsTold();
    void folder_endingInABlank_survivesTrimming();
    void files_areToldByTheirNamesNeverByTheirContent();
    void toolkitSettings_ofOtherPrograms_areNeitherReadNorWritten();

private:
    QString file(const QString& name);

    QTemporaryDir m_folder;
    QWidget m_owner;
};

namespace {

/// Runs a step as soon as a dialog of that kind is the active modal one.
template <typename Dialog>
void whenOpen(const std::function<void(Dialog&)>& step, int triesLeft = 2000)
{
    QTimer::singleShot(10, qApp, [step, triesLeft] {
        if (auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget()))
            step(*dialog);
        else if (triesLeft > 0)
            whenOpen<Dialog>(step, triesLeft - 1);
        else
            qFatal("The dialog does not open");
    });
}

QLineEdit* nameField(QFileDialog& dialog)
{
    return dialog.findChild<QLineEdit*>("fileNameEdit");
}

/// Types a name and presses the button.
void choose(QFileDialog& dialog, const QString& name)
{
    nameField(dialog)->setText(name);
    QMetaObject::invokeMethod(&dialog, "accept");
}

/// Types a text key by key, as a user does, into a dialog that has looked round its folder.
void type(QFileDialog& dialog, const QString& text)
{
    QTest::qWait(300);
    nameField(dialog)->setFocus();
    QTest::keyClicks(nameField(dialog), text, Qt::NoModifier, 1);
}

/// The same with names, each in quotes.
void type(QFileDialog& dialog, const QStringList& names)
{
    type(dialog, '"' + names.join("\" \"") + '"');
}

template <typename T>
QString errorOf(const zib::Outcome<T>& outcome)
{
    if (outcome)
        return "none";
    return outcome.error().kind == zib::Failure::Kind::Cancelled ? "cancelled" : "failed";
}

constexpr const char* kQuotedName = "my \"best\" song.mp3";

zib::FileDialogRequest request(const QString& folder, quint32 flags = 0)
{
    return {"Open Something", "Sound Files(*.mp3;*.wav)|*.mp3;*.wav|All Files(*.*)|*.*", flags, folder};
}

} // namespace

void TestDialogs::initTestCase()
{
    m_owner.show();
    QVERIFY(QTest::qWaitForWindowExposed(&m_owner));
    for (const char* name : {"a.mp3", "SONG.MP3", "b.WAV", "c.txt"})
        file(name);
}

QString TestDialogs::file(const QString& name)
{
    QFile made(m_folder.filePath(name));
    if (!made.open(QIODevice::WriteOnly))
        qFatal("Cannot make %s", qPrintable(name));
    return made.fileName();
}

void TestDialogs::box_ofAKind_hasItsIconTitleAndButtons_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<int>("icon");
    QTest::newRow("information") << "information" << int(QMessageBox::Information);
    QTest::newRow("critical") << "critical" << int(QMessageBox::Critical);
    QTest::newRow("plain") << "plain" << int(QMessageBox::NoIcon);
    QTest::newRow("question") << "question" << int(QMessageBox::Question);
}

void TestDialogs::box_ofAKind_hasItsIconTitleAndButtons()
{
    QFETCH(QString, kind);
    QFETCH(int, icon);
    zib::BoxMessages messages;
    int seen = 0;
    whenOpen<QMessageBox>([&](QMessageBox& box) {
        ++seen;
        QCOMPARE(box.objectName(), QString("zibMessageBox"));
        QCOMPARE(int(box.icon()), icon);
        const QString drawn = kind == "plain" ? QString() : ":/icons/box_" + kind + ".svg";
        const auto* label = box.findChild<QLabel*>("qt_msgboxex_icon_label");
        QVERIFY(label);
        QCOMPARE(label->pixmap().isNull(), drawn.isEmpty());
        if (!drawn.isEmpty())
            QCOMPARE(label->pixmap().toImage(), QIcon(drawn).pixmap(label->pixmap().size()).toImage());
        QCOMPARE(box.windowTitle(), QString("Zib CD Burner"));
        QCOMPARE(box.text(), QString("There are no files in the list!"));
        QCOMPARE(box.parentWidget(), &m_owner);
        QVERIFY(box.isModal());
        QCOMPARE(box.standardButtons(), kind == "question"
                                            ? QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel
                                            : QMessageBox::StandardButtons(QMessageBox::Ok));
        box.reject();
    });
    const QString text = "There are no files in the list!";
    if (kind == "information")
        messages.information(&m_owner, text);
    else if (kind == "critical")
        messages.critical(&m_owner, text);
    else if (kind == "plain")
        messages.plain(&m_owner, text);
    else
        messages.askYesNoCancel(&m_owner, text);
    QCOMPARE(seen, 1);
}

void TestDialogs::box_withATitleOfItsOwn_showsIt()
{
    zib::BoxMessages messages;
    QString title;
    whenOpen<QMessageBox>([&](QMessageBox& box) {
        title = box.windowTitle();
        box.accept();
    });
    messages.critical(&m_owner, "Create directory error: /a", "Error");
    QCOMPARE(title, QString("Error"));
}

void TestDialogs::box_withMarkup_showsItAsText()
{
    zib::BoxMessages messages;
    Qt::TextFormat format = Qt::AutoText;
    whenOpen<QMessageBox>([&](QMessageBox& box) {
        format = box.textFormat();
        box.accept();
    });
    messages.information(&m_owner, "<b>a.mp3</b>");
    QCOMPARE(format, Qt::PlainText);
}

void TestDialogs::box_withARemark_keepsItsTextAndShowsBothAsText()
{
    zib::BoxMessages messages;
    QString text;
    QString below;
    Qt::TextFormat format = Qt::AutoText;
    whenOpen<QMessageBox>([&](QMessageBox& box) {
        text = box.text();
        below = box.informativeText();
        if (const auto* label = box.findChild<QLabel*>("qt_msgbox_informativelabel"))
            format = label->isVisible() ? label->textFormat() : Qt::AutoText;
        box.accept();
    });
    messages.information(&m_owner, "Writing is completed.", "The disc image: /<b>x</b>/Disc.cue");
    QCOMPARE(text, QString("Writing is completed."));
    QCOMPARE(below, QString("The disc image: /<b>x</b>/Disc.cue"));
    QCOMPARE(format, Qt::PlainText);
}

void TestDialogs::box_withoutAnOwner_belongsToTheActiveWindow()
{
    m_owner.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&m_owner));
    zib::BoxMessages messages;
    QWidget* owner = nullptr;
    whenOpen<QMessageBox>([&](QMessageBox& box) {
        owner = box.parentWidget();
        box.accept();
    });
    messages.information(nullptr, "text");
    QCOMPARE(owner, &m_owner);
}

void TestDialogs::question_answeredOrClosed_givesTheAnswer_data()
{
    QTest::addColumn<int>("button");
    QTest::addColumn<int>("answer");
    QTest::newRow("yes") << int(QMessageBox::Yes) << int(zib::Messages::Answer::Yes);
    QTest::newRow("no") << int(QMessageBox::No) << int(zib::Messages::Answer::No);
    QTest::newRow("cancel") << int(QMessageBox::Cancel) << int(zib::Messages::Answer::Cancel);
    QTest::newRow("closed") << 0 << int(zib::Messages::Answer::Cancel);
}

void TestDialogs::question_answeredOrClosed_givesTheAnswer()
{
    QFETCH(int, button);
    zib::BoxMessages messages;
    whenOpen<QMessageBox>([&](QMessageBox& box) {
        if (button == 0)
            box.close();
        else
            box.button(static_cast<QMessageBox::StandardButton>(button))->click();
    });
    QTEST(int(messages.askYesNoCancel(&m_owner, "Would you like to save this project?")), "answer");
}

void TestDialogs::question_withAPresetAnswer_givesItToEnter()
{
    zib::BoxMessages messages;
    whenOpen<QMessageBox>([](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Return); });
    QCOMPARE(int(messages.askYesNoCancel(&m_owner, "Replace it?", zib::Messages::Answer::No)),
             int(zib::Messages::Answer::No));
}

void TestDialogs::filters_ofAText_becomeQtsOwn_data()
{
    QTest::addColumn<QString>("filter");
    QTest::addColumn<QStringList>("filters");
    QTest::newRow("two") << "Project Files(*.zibp)|*.zibp|All Files(*.*)|*.*"
                         << QStringList{"Project Files(*.zibp) (*.zibp)", "All Files(*.*) (*)"};
    QTest::newRow("several patterns") << "Sound|*.mp3; *.wav" << QStringList{"Sound (*.mp3 *.wav)"};
    QTest::newRow("empty") << "" << QStringList();
    QTest::newRow("without patterns") << "Sound" << QStringList();
}

void TestDialogs::filters_ofAText_becomeQtsOwn()
{
    QFETCH(QString, filter);
    QTEST(zib::FileBox::nameFiltersOf(filter), "filters");
}

void TestDialogs::openFile_ofOne_givesItsPath()
{
    zib::DesktopDialogs dialogs;
    QString title;
    whenOpen<QFileDialog>([&](QFileDialog& dialog) {
        title = dialog.windowTitle();
        choose(dialog, "a.mp3");
    });
    const auto answer = dialogs.openFile(&m_owner, request(m_folder.path()));
    QVERIFY(answer);
    QCOMPARE(*answer, m_folder.filePath("a.mp3"));
    QCOMPARE(title, QString("Open Something"));
}

void TestDialogs::openFile_cancelled_isACancel()
{
    zib::DesktopDialogs dialogs;
    whenOpen<QFileDialog>([](QFileDialog& dialog) { dialog.reject(); });
    QCOMPARE(errorOf(dialogs.openFile(&m_owner, request(m_folder.path()))), QString("cancelled"));
}

void TestDialogs::openFile_listsCapitalsToo()
{
    zib::DesktopDialogs dialogs;
    QStringList names;
    QList<int> modes;
    whenOpen<QFileDialog>([&](QFileDialog& dialog) {
        const auto* list = dialog.findChild<QTreeView*>("treeView");
        for (int column = 0; column < list->header()->count(); ++column)
            modes << list->header()->sectionResizeMode(column);
        const auto shown = [&] {
            names.clear();
            for (int row = 0; row < list->model()->rowCount(list->rootIndex()); ++row)
                names << list->model()->index(row, 0, list->rootIndex()).data().toString();
            names.sort();
            return names.size();
        };
        QTRY_COMPARE_WITH_TIMEOUT(shown(), 3, 60000);
        QCOMPARE(dialog.nameFilters().size(), 2);
        dialog.reject();
    });
    (void)dialogs.openFile(&m_owner, request(m_folder.path()));
    QCOMPARE(names, (QStringList{"SONG.MP3", "a.mp3", "b.WAV"}));
    QCOMPARE(modes, (QList<int>{QHeaderView::Stretch, QHeaderView::ResizeToContents,
                                QHeaderView::ResizeToContents, QHeaderView::ResizeToContents}));
}

void TestDialogs::openFile_ofSeveral_givesFolderAndNames()
{
    zib::DesktopDialogs dialogs;
    whenOpen<QFileDialog>([](QFileDialog& dialog) { choose(dialog, "\"a.mp3\" \"SONG.MP3\" \"b.WAV\""); });
    const auto answer =
        dialogs.openFile(&m_owner, request(m_folder.path(), zib::FileDialogRequest::AllowMultiselect));
    QVERIFY(answer);
    QCOMPARE(answer->split(QChar(QChar::Null)), (QStringList{m_folder.path(), "a.mp3", "SONG.MP3", "b.WAV"}));
}

void TestDialogs::openFile_ofSeveralTypedWithTheirPaths_givesAll_data()
{
    QTest::addColumn<QString>("start");
    QTest::newRow("from elsewhere") << QDir::homePath();
    QTest::newRow("in their folder") << m_folder.path();
}

void TestDialogs::openFile_ofSeveralTypedWithTheirPaths_givesAll()
{
    QFETCH(QString, start);
    zib::DesktopDialogs dialogs;
    whenOpen<QFileDialog>([this](QFileDialog& dialog) {
        type(dialog, {m_folder.filePath("a.mp3"), m_folder.filePath("b.WAV")});
        QTest::keyClick(nameField(dialog), Qt::Key_Return);
    });
    const auto answer = dialogs.openFile(&m_owner, request(start, zib::FileDialogRequest::AllowMultiselect));
    QVERIFY(answer);
    QCOMPARE(answer->split(QChar(QChar::Null)), (QStringList{m_folder.path(), "a.mp3", "b.WAV"}));
}

void TestDialogs::openFile_ofSeveralTypedButOneMissing_staysOpen()
{
    zib::DesktopDialogs dialogs;
    bool stayed = false;
    whenOpen<QFileDialog>([&, this](QFileDialog& dialog) {
        whenOpen<QMessageBox>([](QMessageBox& box) { box.reject(); });
        type(dialog, {m_folder.filePath("a.mp3"), m_folder.filePath("none.mp3")});
        QTest::keyClick(nameField(dialog), Qt::Key_Return);
        stayed = dialog.isVisible();
        dialog.reject();
    });
    const auto answer =
        dialogs.openFile(&m_owner, request(QDir::homePath(), zib::FileDialogRequest::AllowMultiselect));
    QCOMPARE(errorOf(answer), QString("cancelled"));
    QVERIFY(stayed);
}

void TestDialogs::openFile_ofNamesWithQuotes_losesNone_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QStringList>("names");
    QTest::newRow("quotes in the name") << QString(kQuotedName) << QStringList{kQuotedName};
    QTest::newRow("one name in quotes") << QString("\"a.mp3\"") << QStringList{"a.mp3"};
    QTest::newRow("nothing between the names")
        << QString("\"a.mp3\"\"b.WAV\"") << QStringList{"a.mp3", "b.WAV"};
}

void TestDialogs::openFile_ofNamesWithQuotes_losesNone()
{
    QFETCH(QString, typed);
    QFETCH(QStringList, names);
    QVERIFY(QFile(m_folder.filePath(kQuotedName)).open(QIODevice::WriteOnly));
    zib::DesktopDialogs dialogs;
    whenOpen<QFileDialog>([&](QFileDialog& dialog) {
        type(dialog, typed);
        QTest::keyClick(nameField(dialog), Qt::Key_Return);
        if (dialog.isVisible())
            dialog.reject();
    });
    const auto answer =
        dialogs.openFile(&m_owner, request(m_folder.path(), zib::FileDialogRequest::AllowMultiselect));
    QVERIFY(answer);
    QStringList parts = answer->split(QChar(QChar::Null));
    if (parts.size() > 1)
        QCOMPARE(parts.takeFirst(), m_folder.path());
    else
        parts.first().remove(m_folder.path() + '/');
    QCOMPARE(parts, names);
}

void TestDialogs::openFile_ofMarkedFilesWithQuotes_givesThem()
{
    const QStringList names{"a.mp3", kQuotedName};
    QVERIFY(QFile(m_folder.filePath(kQuotedName)).open(QIODevice::WriteOnly));
    zib::DesktopDialogs dialogs;
    whenOpen<QFileDialog>([&](QFileDialog& dialog) {
        auto* list = dialog.findChild<QTreeView*>("treeView");
        auto* model = qobject_cast<QFileSystemModel*>(list->model());
        QVERIFY(QTest::qWaitFor([&] { return model->index(m_folder.filePath(names[1])).isValid(); }));
        for (const QString& name : names)
            list->selectionModel()->select(model->index(m_folder.filePath(name)),
                                           QItemSelectionModel::Select | QItemSelectionModel::Rows);
        QMetaObject::invokeMethod(&dialog, "accept");
        if (dialog.isVisible())
            dialog.reject();
    });
    const auto answer =
        dialogs.openFile(&m_owner, request(m_folder.path(), zib::FileDialogRequest::AllowMultiselect));
    QVERIFY(answer);
    QCOMPARE(answer->split(QChar(QChar::Null)), QStringList(m_folder.path()) + names);
}

void TestDialogs::openFile_ofNamesThatCannotBeToldApart_saysSoAndStaysOpen_data()
{
    QTest::addColumn<QString>("typed");
    QTest::newRow("one without quotes") << QString("\"a.mp3\" b.WAV");
    QTest::newRow("before the quotes") << QString("a.mp3 \"b.WAV\"");
    QTest::newRow("quotes in one of several") << QString("\"a.mp3\" \"my \"best\" b.WAV\"");
    QTest::newRow("no end") << QString("\"a.mp3");
}

void TestDialogs::openFile_ofNamesThatCannotBeToldApart_saysSoAndStaysOpen()
{
    QFETCH(QString, typed);
    zib::DesktopDialogs dialogs;
    QString said;
    bool open = false;
    whenOpen<QFileDialog>([&](QFileDialog& dialog) {
        whenOpen<QMessageBox>([&](QMessageBox& box) {
            said = box.text();
            box.accept();
        });
        type(dialog, typed);
        QTest::keyClick(nameField(dialog), Qt::Key_Return);
        open = dialog.isVisible();
        dialog.reject();
    });
    const auto answer =
        dialogs.openFile(&m_owner, request(m_folder.path(), zib::FileDialogRequest::AllowMultiselect));
    QCOMPARE(errorOf(answer), QString("cancelled"));
    QVERIFY(open);
    QCOMPARE(said, "These names cannot be told apart. Please put each of them in quotes:\n" + typed);
}

void TestDialogs::openFile_ofSeveralFromSeveralFolders_givesPlainPaths()
{
    QVERIFY(QDir(m_folder.path()).mkpath("sub"));
    QVERIFY(QFile(m_folder.filePath("sub/c.mp3")).open(QIODevice::WriteOnly));
    zib::DesktopDialogs dialogs;
    whenOpen<QFileDialog>([](QFileDialog& dialog) { choose(dialog, "\"sub/c.mp3\" \"a.mp3\""); });
    const auto answer =
        dialogs.openFile(&m_owner, request(m_folder.path(), zib::FileDialogRequest::AllowMultiselect));
    QVERIFY(answer);
    QCOMPARE(answer->split(QChar(QChar::Null)), (QStringList{m_folder.path(), "sub/c.mp3", "a.mp3"}));
}

void TestDialogs::openFile_ofSeveralButOne_givesItsPath()
{
    zib::DesktopDialogs dialogs;
    whenOpen<QFileDialog>([](QFileDialog& dialog) { choose(dialog, "a.mp3"); });
    const auto answer =
        dialogs.openFile(&m_owner, request(m_folder.path(), zib::FileDialogRequest::AllowMultiselect));
    QVERIFY(answer);
    QCOMPARE(*answer, m_folder.filePath("a.mp3"));
}

void TestDialogs::openFile_ofAnAnswerTooLong_fails()
{
    zib::DesktopDialogs dialogs;
    zib::FileDialogRequest asked = request(m_folder.path(), zib::FileDialogRequest::AllowMultiselect);
    asked.maxFileSize = static_cast<int>(m_folder.path().size()) + 10;
    whenOpen<QFileDialog>([](QFileDialog& dialog) { choose(dialog, "\"a.mp3\" \"SONG.MP3\""); });
    const auto answer = dialogs.openFile(&m_owner, asked);
    QVERIFY(!answer);
    QCOMPARE(answer.error().kind, zib::Failure::Kind::BadValue);
}

void TestDialogs::openFile_ofAMissingFile_staysOpen()
{
    zib::DesktopDialogs dialogs;
    bool warned = false;
    bool open = false;
    whenOpen<QFileDialog>([&](QFileDialog& dialog) {
        whenOpen<QMessageBox>([&](QMessageBox& box) {
            warned = true;
            box.accept();
        });
        choose(dialog, "none.mp3");
        open = dialog.isVisible();
        dialog.reject();
    });
    const auto flags = zib::FileDialogRequest::FileMustExist | zib::FileDialogRequest::PathMustExist;
    QCOMPARE(errorOf(dialogs.openFile(&m_owner, request(m_folder.path(), flags))), QString("cancelled"));
    QVERIFY(warned);
    QVERIFY(open);
}

void TestDialogs::openFile_again_startsWhereTheLastWas()
{
    zib::DesktopDialogs dialogs;
    whenOpen<QFileDialog>([](QFileDialog& dialog) { choose(dialog, "a.mp3"); });
    QVERIFY(dialogs.openFile(&m_owner, request(m_folder.path())));
    QString folder;
    whenOpen<QFileDialog>([&](QFileDialog& dialog) {
        folder = dialog.directory().absolutePath();
        dialog.reject();
    });
    (void)dialogs.openFile(&m_owner, request({}));
    QCOMPARE(folder, m_folder.path());
}

void TestDialogs::openAndSaveBox_areOfTheirKind()
{
    zib::DesktopDialogs dialogs;
    QList<QFileDialog::AcceptMode> modes;
    QStringList filters;
    const auto note = [&](QFileDialog& dialog) {
        QCOMPARE(dialog.objectName(), QString("zibFileBox"));
        modes << dialog.acceptMode();
        filters << dialog.nameFilters().value(0);
        dialog.reject();
    };
    whenOpen<QFileDialog>(note);
    QVERIFY(!dialogs.openFile(&m_owner, request(m_folder.path())));
    whenOpen<QFileDialog>(note);
    QVERIFY(!dialogs.saveFile(&m_owner, request(m_folder.path())));
    QCOMPARE(modes, (QList{QFileDialog::AcceptOpen, QFileDialog::AcceptSave}));
    QCOMPARE(filters, QStringList(2, "Sound Files(*.mp3;*.wav) (*.mp3 *.wav)"));
}

void TestDialogs::saveFile_ofAnyName_givesItAsTyped_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name : {"new.zibp", "noending", "a.mp3", "two.dots.txt", "Größe 音.zibp", "blank inside",
                             "Bowie \"Heroes\"", "7\" singles.zibp", "\"one\" \"two\""})
        QTest::newRow(name) << QString(name);
}

void TestDialogs::saveFile_ofAnyName_givesItAsTyped()
{
    QFETCH(QString, name);
    zib::DesktopDialogs dialogs;
    whenOpen<QFileDialog>([&](QFileDialog& dialog) { choose(dialog, name); });
    const auto answer = dialogs.saveFile(&m_owner, {"Save Project As", "Project Files(*.zibp)|*.zibp",
                                                    zib::FileDialogRequest::PathMustExist, m_folder.path()});
    QVERIFY(answer); // A name that exists is not asked about either.
    QCOMPARE(*answer, m_folder.filePath(name));
}

void TestDialogs::saveFile_deepInTheTree_givesTheWholePath()
{
    const QString deep = m_folder.path() + ("/" + QString(200, 'd')).repeated(4);
    QVERIFY(QDir().mkpath(deep));
    zib::DesktopDialogs dialogs;
    whenOpen<QFileDialog>([](QFileDialog& dialog) { choose(dialog, "a.zibp"); });
    const auto answer = dialogs.saveFile(&m_owner, request(deep, zib::FileDialogRequest::PathMustExist));
    QVERIFY(answer);
    QCOMPARE(*answer, deep + "/a.zibp");
}

void TestDialogs::saveFile_inAMissingFolder_saysSoAndStaysOpen()
{
    zib::DesktopDialogs dialogs;
    QString said;
    bool open = false;
    whenOpen<QFileDialog>([&](QFileDialog& dialog) {
        whenOpen<QMessageBox>([&](QMessageBox& box) {
            said = box.text();
            box.accept();
        });
        choose(dialog, m_folder.filePath("none/a.zibp"));
        open = dialog.isVisible();
        dialog.reject();
    });
    QCOMPARE(
        errorOf(dialogs.saveFile(&m_owner, request(m_folder.path(), zib::FileDialogRequest::PathMustExist))),
        QString("cancelled"));
    QVERIFY(open);
    QCOMPARE(said, "This folder does not exist:\n" + m_folder.filePath("none"));
}

void TestDialogs::saveFile_ofANameTooLong_saysSoAndStaysOpen_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("of letters") << QString(256, 'x');
    QTest::newRow("of bytes") << QStringLiteral("ä").repeated(128);
}

void TestDialogs::saveFile_ofANameTooLong_saysSoAndStaysOpen()
{
    QFETCH(QString, name);
    zib::DesktopDialogs dialogs;
    QString said;
    bool open = false;
    whenOpen<QFileDialog>([&](QFileDialog& dialog) {
        nameField(dialog)->setText(name);
        QTimer::singleShot(0, &dialog, [&] { // A box may or may not come.
            QTimer::singleShot(500, &dialog, [&] {
                if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
                    said = box->text();
                    box->accept();
                }
                open = dialog.isVisible();
                dialog.reject();
            });
            QMetaObject::invokeMethod(&dialog, "accept");
        });
    });
    QCOMPARE(errorOf(dialogs.saveFile(&m_owner, request(m_folder.path()))), QString("cancelled"));
    QVERIFY(open);
    QCOMPARE(said, "This name is too long:\n" + name);
}

void TestDialogs::saveFile_ofOneNameInQuotes_isThatName()
{
    zib::DesktopDialogs dialogs;
    whenOpen<QFileDialog>([](QFileDialog& dialog) { choose(dialog, "\"Heroes.zibp\""); });
    const auto answer = dialogs.saveFile(&m_owner, request(m_folder.path()));
    QVERIFY(answer);
    QCOMPARE(*answer, m_folder.filePath("Heroes.zibp"));
}

void TestDialogs::colorAndFontBox_givenATitle_bearIt()
{
    zib::DesktopDialogs dialogs;
    QStringList titles;
    const auto note = [&titles](QDialog& dialog) {
        titles << dialog.objectName() + ": " + dialog.windowTitle();
        dialog.reject();
    };
    whenOpen<QColorDialog>(note);
    QVERIFY(!dialogs.chooseColor(&m_owner, "A Color", Qt::red));
    whenOpen<QFontDialog>(note);
    QVERIFY(!dialogs.chooseFont(&m_owner, "A Font", m_owner.font()));
    QCOMPARE(titles, (QStringList{"zibColorBox: A Color", "zibFontBox: A Font"}));
}

void TestDialogs::color_chosen_isTheAnswer()
{
    zib::DesktopDialogs dialogs;
    QColor preset;
    whenOpen<QColorDialog>([&](QColorDialog& dialog) {
        preset = dialog.currentColor();
        dialog.setCurrentColor(QColor(1, 2, 3));
        dialog.accept();
    });
    const auto answer = dialogs.chooseColor(&m_owner, "Color", QColor(9, 8, 7));
    QVERIFY(answer);
    QCOMPARE(*answer, QColor(1, 2, 3));
    QCOMPARE(preset, QColor(9, 8, 7));
}

void TestDialogs::color_cancelled_isACancel()
{
    zib::DesktopDialogs dialogs;
    whenOpen<QColorDialog>([](QColorDialog& dialog) { dialog.reject(); });
    QCOMPARE(errorOf(dialogs.chooseColor(&m_owner, {}, Qt::red)), QString("cancelled"));
}

void TestDialogs::font_chosen_isTheAnswer()
{
    zib::DesktopDialogs dialogs;
    QFont font("DejaVu Sans", 17);
    font.setItalic(true);
    whenOpen<QFontDialog>([&](QFontDialog& dialog) { dialog.accept(); });
    const auto answer = dialogs.chooseFont(&m_owner, "Font", font);
    QVERIFY(answer);
    QCOMPARE(answer->family(), QString("DejaVu Sans"));
    QCOMPARE(answer->pointSize(), 17);
    whenOpen<QFontDialog>([](QFontDialog& dialog) { dialog.reject(); });
    QCOMPARE(errorOf(dialogs.chooseFont(&m_owner, {}, font)), QString("cancelled"));
}

void TestDialogs::font_thatIsNotInstalled_isKeptUnlessAnotherIsChosen()
{
    zib::DesktopDialogs dialogs;
    const QFont font("No Such Face", 17);
    QString shown;
    whenOpen<QFontDialog>([&](QFontDialog& dialog) {
        shown = dialog.currentFont().family();
        dialog.accept();
    });
    const auto answer = dialogs.chooseFont(&m_owner, "Font", font);
    QCOMPARE(shown, QFontInfo(font).family());
    QVERIFY(answer);
    QCOMPARE(answer->family(), QString("No Such Face"));
    QCOMPARE(answer->pointSize(), 17);
}

void TestDialogs::folder_picked_isTheAnswer()
{
    QVERIFY(QDir(m_folder.path()).mkdir("rips"));
    zib::DesktopFolderPicker picker;
    QString title;
    whenOpen<QFileDialog>([&](QFileDialog& dialog) {
        title = dialog.windowTitle();
        choose(dialog, m_folder.filePath("rips"));
    });
    QCOMPARE(picker.SHBrowseForFolderA(&m_owner, "Please choose", {}), m_folder.filePath("rips"));
    QCOMPARE(title, QString("Please choose"));
}

void TestDialogs::folder_withQuotesInItsName_isTheAnswer()
{
    QVERIFY(QDir(m_folder.path()).mkpath("Bowie \"Heroes\""));
    zib::DesktopFolderPicker picker;
    whenOpen<QFileDialog>([](QFileDialog& dialog) {
        choose(dialog, "Bowie \"Heroes\"");
        if (dialog.isVisible())
            dialog.reject();
    });
    QCOMPARE(picker.SHBrowseForFolderA(&m_owner, "Please choose", m_folder.path()),
             m_folder.filePath("Bowie \"Heroes\""));
}

void TestDialogs::folder_cancelled_isEmpty()
{
    zib::DesktopFolderPicker picker;
    whenOpen<QFileDialog>([](QFileDialog& dialog) { dialog.reject(); });
    QCOMPARE(picker.SHBrowseForFolderA(&m_owner, "Please choose", {}), QString());
}

void TestDialogs::folder_picker_startsWhereItIsTold()
{
    QVERIFY(QDir(m_folder.path()).mkpath("start/ here "));
    zib::DesktopFolderPicker picker;
    const auto startFor = [&](const QString& folder) {
        QString start;
        whenOpen<QFileDialog>([&](QFileDialog& dialog) {
            start = dialog.directory().path();
            dialog.reject();
        });
        picker.SHBrowseForFolderA(&m_owner, "Please choose", folder);
        return start;
    };
    QCOMPARE(startFor(m_folder.filePath("start")), m_folder.filePath("start"));
    QCOMPARE(startFor(m_folder.filePath("start/ here ")), m_folder.filePath("start/ here "));
    QCOMPARE(startFor(m_folder.filePath("start/gone/too")), m_folder.filePath("start"));
    QCOMPARE(startFor("relative"), QDir::homePath());
}

void TestDialogs::folder_endingInABlank_survivesTrimming()
{
    QVERIFY(QDir(m_folder.path()).mkpath("rips "));
    zib::DesktopFolderPicker picker;
    whenOpen<QFileDialog>([&](QFileDialog& dialog) { choose(dialog, m_folder.filePath("rips ")); });
    const QString chosen = picker.SHBrowseForFolderA(&m_owner, "Please choose", {});
    QVERIFY2(QFileInfo(chosen.trimmed()).isDir(), qPrintable(chosen));
}

void TestDialogs::files_areToldByTheirNamesNeverByTheirContent()
{
    const QString picture = m_folder.filePath("picture");
    QVERIFY(QImage(1, 1, QImage::Format_RGB32).save(picture, "PNG"));
    const QString pipe = m_folder.filePath("pipe");
    QCOMPARE(::mkfifo(qPrintable(pipe), 0666), 0);
    const zib::NameIcons icons;
    QCOMPARE(icons.type(QFileInfo(picture)), QString());
    QVERIFY(icons.type(QFileInfo("/no/such/song.mp3")).contains("MP3"));
    for (const QString& path : {picture, pipe, m_folder.path(), QString("/"), QString("/no/such/song.mp3")})
        QVERIFY(!icons.icon(QFileInfo(path)).isNull());
    zib::FileBox box(&m_owner, "Open", m_folder.path());
    QVERIFY(dynamic_cast<zib::NameIcons*>(box.iconProvider()));
    QVERIFY(QFile::remove(pipe));
}

void TestDialogs::toolkitSettings_ofOtherPrograms_areNeitherReadNorWritten()
{
    zib::DesktopDialogs dialogs;
    const QSettings shared(QSettings::NativeFormat, QSettings::UserScope, "QtProject");
    QVERIFY2(shared.fileName().startsWith("/dev/null/"), qPrintable(shared.fileName()));
    const QString before = QDir::homePath() + "/.config/QtProject.conf";
    const QDateTime changed = QFileInfo(before).lastModified();
    whenOpen<QFileDialog>([](QFileDialog& dialog) { dialog.reject(); });
    QVERIFY(!dialogs.openFile(&m_owner, {"Open", "All Files(*.*)|*.*"}));
    QCOMPARE(QFileInfo(before).lastModified(), changed);
}

QTEST_MAIN(TestDialogs)
#include "tst_dialogs.moc"
