#include "tools/Stage.h"

#include "tools/frmMP3ToWAV.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGroupBox>
#include <QLineEdit>
#include <QProgressBar>
#include <QSemaphore>
#include <QTemporaryDir>
#include <QToolTip>

#include <unistd.h>

namespace {

using Flag = zib::FileDialogRequest::Flag;

const QString kNotConverted =
    "c: The following MP3 file could not be converted whole, so no WAV file was made.\n";

/// The converter, with a real folder for its files.
struct Desk : zib::Stage
{
    Desk()
    {
        OptionsData options;
        options.MP3Input = folder.filePath("mp3 in").leftJustified(1024);
        options.WAVOutput = folder.filePath("wav out").leftJustified(1024);
        options.ExploreAfterConverting = false;
        zib::setOptions(options);
        window = std::make_unique<frmMP3ToWAV>(desk.services);
        window->show();
    }

    QLineEdit* text(const char* name) const { return window->findChild<QLineEdit*>(name); }
    QString percent() const { return window->findChild<QGroupBox*>("frmPer")->title(); }
    void press(const char* name) const { click(*window, name); }
    QString path(const QString& name) const { return folder.filePath(name); }

    /// Puts a sound on the shelf and a file of its name into the folder.
    zib::FakeSound& addFile(const QString& name, qint64 frames, int rateHz = 44100, int channels = 2)
    {
        QFile file(path(name));
        if (!file.open(QIODevice::WriteOnly))
            qFatal("no file");
        addSound(path(name), frames, rateHz, channels);
        return shelf.sounds[path(name)];
    }
    void convert(const QString& source, const QString& target)
    {
        text("txtOpen")->setText(path(source));
        text("txtSave")->setText(path(target));
        press("cmdConvert");
    }

    /// Begins a conversion whose blocks come one by one, as @p gate lets them.
    void beginGated(const QString& source, const QString& target)
    {
        zib::Errands::setPatience(zib::Errands::kPatience);
        shelf.onRead = [this] { gate.acquire(); };
        convert(source, target);
    }
    /// Lets the rest through and waits for the last call.
    bool finish(const QString& source)
    {
        gate.release(1000);
        const QString last = "close " + path(source);
        return QTest::qWaitFor([&] { return shelf.noted().contains(last); }, 20'000);
    }
    QAbstractButton* button(const char* name) const { return window->findChild<QAbstractButton*>(name); }
    QStringList& shown() { return desk.messages.shown; }

    QTemporaryDir folder;
    QSemaphore gate;
    std::unique_ptr<frmMP3ToWAV> window;
};

} // namespace

Q_DECLARE_METATYPE(zib::Messages::Answer)

/// The converter, by its controls.
class TestFrmMP3ToWAV : public QObject
{
    Q_OBJECT
private slots:
    void window_bearsItsTexts()
    {
        const Desk desk;
        QCOMPARE(desk.window->windowTitle(), QString("MP3 To WAV Converter"));
        const QList<std::pair<const char*, QString>> boxes{
            {"Frame1", "Open an MP3 file"}, {"Frame2", "Set a WAV file"}, {"frmPer", "Progress"}};
        for (const auto& [name, title] : boxes)
            QCOMPARE(desk.window->findChild<QGroupBox*>(name)->title(), title);
        const QList<std::pair<const char*, QString>> buttons{{"cmdOpen", "..."},
                                                             {"cmdSave", "..."},
                                                             {"cmdConvert", "&Convert"},
                                                             {"cmdOptions", "&Options..."},
                                                             {"CancelButton", "E&xit"}};
        for (const auto& [name, label] : buttons)
            QCOMPARE(desk.window->findChild<QAbstractButton*>(name)->text(), label);
        QVERIFY(desk.text("txtOpen")->text().isEmpty());
        QVERIFY(desk.text("txtSave")->text().isEmpty());
        QCOMPARE(desk.window->findChild<QProgressBar*>("pbPer")->maximum(), 100);
    }

    void load_preparesBothFiles()
    {
        const Desk desk;
        QCOMPARE(desk.shelf.calls, (QStringList{"sixteen off", "sixteen off", "output 44100 2 16"}));
    }

    void cmdOpen_asksInTheMp3FolderAndMakesIt()
    {
        const Desk desk;
        desk.press("cmdOpen");
        const auto& request = desk.desk.dialogs.opened.value(0);
        QCOMPARE(request.title, QString("Open an MP3 File"));
        QCOMPARE(request.filter, QString("MP3 Files(*.mp3)|*.mp3"));
        QCOMPARE(request.flags, 0x200U | 0x1000U | 0x80000U | 0x200000U);
        QCOMPARE(request.maxFileSize, 1024);
        QCOMPARE(request.initialFolder, desk.path("mp3 in"));
        QVERIFY(QFileInfo(desk.path("mp3 in")).isDir());
    }

    void cmdOpen_cancelled_leavesTheBoxes()
    {
        const Desk desk;
        desk.text("txtOpen")->setText("/old.mp3");
        desk.press("cmdOpen");
        QCOMPARE(desk.text("txtOpen")->text(), QString("/old.mp3"));
        QVERIFY(desk.text("txtSave")->text().isEmpty());
        QVERIFY(desk.desk.messages.shown.isEmpty());
    }

    void cmdOpen_suggestsTheWavBesideIt_data()
    {
        QTest::addColumn<QString>("answer");
        QTest::addColumn<QString>("opened");
        QTest::addColumn<QString>("wav");
        QTest::newRow("lower") << "/m/a.mp3"
                               << "/m/a.mp3"
                               << "/m/a.wav";
        QTest::newRow("upper") << "/m/A.MP3"
                               << "/m/A.MP3"
                               << "/m/A.wav";
        QTest::newRow("bak") << "/m/a.mp3.bak"
                             << "/m/a.mp3.bak"
                             << "/m/a.mp3.bak.wav";
        QTest::newRow("none") << "/m/a"
                              << "/m/a"
                              << "/m/a.wav";
        QTest::newRow("several") << QString("/m") + QChar::Null + "b.mp3" + QChar::Null + "c.mp3"
                                 << "/m/b.mp3"
                                 << "/m/b.wav";
    }
    void cmdOpen_suggestsTheWavBesideIt()
    {
        QFETCH(QString, answer);
        Desk desk;
        desk.desk.dialogs.files << answer;
        desk.press("cmdOpen");
        QTEST(desk.text("txtOpen")->text(), "opened");
        QTEST(desk.text("txtSave")->text(), "wav");
    }

    void cmdSave_asksInTheWavFolderAndTakesTheName()
    {
        Desk desk;
        desk.desk.dialogs.files << "/out/new.wav";
        desk.press("cmdSave");
        const auto& request = desk.desk.dialogs.saved.value(0);
        QCOMPARE(request.title, QString("Save As WAV File"));
        QCOMPARE(request.filter, QString("WAV Files(*.wav)|*.wav"));
        QCOMPARE(request.flags, 0x200U | 0x1000U | 0x80000U | 0x200000U);
        QCOMPARE(request.maxFileSize, 1024);
        QCOMPARE(request.initialFolder, desk.path("wav out"));
        QVERIFY(QFileInfo(desk.path("wav out")).isDir());
        QCOMPARE(desk.text("txtSave")->text(), QString("/out/new.wav"));
        desk.press("cmdSave");
        QCOMPARE(desk.text("txtSave")->text(), QString("/out/new.wav"));
    }

    void cmdOptions_opensTheOptions()
    {
        const Desk desk;
        desk.press("cmdOptions");
        QCOMPARE(desk.desk.windows.shown, QStringList{"options"});
    }

    void cancelButton_closes()
    {
        const Desk desk;
        desk.press("CancelButton");
        QVERIFY(!desk.window->isVisible());
    }

    void cmdConvert_refusesWhatIsMissing()
    {
        const Desk desk;
        desk.text("txtOpen")->setText("   ");
        desk.press("cmdConvert");
        desk.text("txtOpen")->setText("/nowhere/a.mp3");
        desk.text("txtSave")->setText("  ");
        desk.press("cmdConvert");
        desk.text("txtSave")->setText("/nowhere/a.wav");
        desk.press("cmdConvert");
        QCOMPARE(desk.desk.messages.shown,
                 (QStringList{"i: Please open an MP3 file for converting.",
                              "i: Please set a WAV file for saving the converted MP3 file.",
                              "c: The following MP3 file does not exist.\n/nowhere/a.mp3"}));
        QVERIFY(!desk.shelf.calls.contains("open /nowhere/a.mp3"));
    }

    void cmdConvert_aFolder_isNoFile()
    {
        const Desk desk;
        desk.text("txtOpen")->setText(desk.folder.path());
        desk.text("txtSave")->setText("/x.wav");
        desk.press("cmdConvert");
        QCOMPARE(desk.desk.messages.shown,
                 QStringList{"c: The following MP3 file does not exist.\n" + desk.folder.path()});
    }

    void cmdConvert_writesEveryBlockInOrder()
    {
        Desk desk;
        const auto sound = desk.addFile("a.mp3", 100000);
        desk.shelf.calls.clear();
        desk.convert("a.mp3", "new/deep/a.wav");
        const QString target = desk.path("new/deep/a.wav");
        QCOMPARE(desk.shelf.calls,
                 (QStringList{"output 44100 2 16", "open " + desk.path("a.mp3"), "create " + target,
                              "input 44100 2", "close " + target, "close " + desk.path("a.mp3")}));
        QCOMPARE(desk.shelf.written[target].samples, sound.samples);
        QCOMPARE(desk.desk.messages.shown, QStringList{"i: Converting Completed."});
        QCOMPARE(desk.percent(), QString("Progress  -  100%"));
        QCOMPARE(desk.window->findChild<QProgressBar*>("pbPer")->value(), 100);
        QVERIFY(desk.window->findChild<QAbstractButton*>("cmdConvert")->isEnabled());
        QVERIFY(QFileInfo::exists(target));
        QCOMPARE(desk.window->cursor().shape(), Qt::ArrowCursor);
    }

    void cmdConvert_whileRunning_isDisabledUnderAnHourglassAndCounts()
    {
        Desk desk;
        desk.addFile("a.mp3", 44100 * 4);
        desk.beginGated("a.mp3", "a.wav");
        QTRY_COMPARE_WITH_TIMEOUT(desk.percent(), QString("Progress  -  0%"), 20'000);
        for (const char* percent : {"25%", "50%", "75%"}) {
            desk.gate.release();
            QTRY_COMPARE_WITH_TIMEOUT(desk.percent(), QString("Progress  -  ") + percent, 20'000);
            QVERIFY(!desk.button("cmdConvert")->isEnabled());
            QCOMPARE(desk.window->cursor().shape(), Qt::WaitCursor);
        }
        QVERIFY(desk.finish("a.mp3"));
        QTRY_COMPARE_WITH_TIMEOUT(desk.shown(), QStringList{"i: Converting Completed."}, 20'000);
        QVERIFY(desk.button("cmdConvert")->isEnabled());
        QCOMPARE(desk.window->cursor().shape(), Qt::ArrowCursor);
    }

    void progress_roundsToWholePercents()
    {
        Desk desk;
        desk.addFile("a.mp3", 44100 * 8, 44100, 1);
        desk.beginGated("a.mp3", "a.wav");
        for (const char* percent : {"12%", "25%", "38%"}) { // 12.5 and 37.5 are rounded to the even number
            desk.gate.release();
            QTRY_COMPARE_WITH_TIMEOUT(desk.percent(), QString("Progress  -  ") + percent, 20'000);
        }
        QVERIFY(desk.finish("a.mp3"));
    }

    void conversion_whileItRuns_keepsTheSystemAwake()
    {
        Desk desk;
        desk.addFile("a.mp3", 44100 * 4);
        const QStringList& held = *desk.desk.inhibitor.held;
        desk.beginGated("a.mp3", "a.wav");
        QTRY_COMPARE_WITH_TIMEOUT(held, QStringList{"An MP3 file is being converted"}, 20'000);
        QVERIFY(desk.finish("a.mp3"));
        QTRY_COMPARE_WITH_TIMEOUT(held, QStringList(), 20'000);
    }
    void keys_whileRunning_doNoHarm()
    {
        Desk desk;
        desk.addFile("a.mp3", 44100 * 4);
        QApplication::setActiveWindow(desk.window.get());
        desk.beginGated("a.mp3", "a.wav");
        for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Escape}) {
            QCOMPARE(desk.window->focusWidget()->objectName(), QString("pbPer"));
            QTest::keyClick(desk.window->focusWidget(), key);
            QVERIFY(desk.window->isVisible());
        }
        desk.button("CancelButton")->setFocus();
        QTest::keyClick(desk.button("CancelButton"), Qt::Key_Return);
        QVERIFY(desk.window->isVisible());
        desk.button("cmdOptions")->setFocus();
        QTest::keyClick(desk.button("cmdOptions"), Qt::Key_Return);
        QVERIFY(desk.desk.windows.shown.isEmpty());
        QVERIFY(desk.finish("a.mp3"));
        QTRY_COMPARE_WITH_TIMEOUT(desk.shown(), QStringList{"i: Converting Completed."}, 20'000);
        QCOMPARE(desk.window->focusWidget()->objectName(), QString("cmdConvert"));
        QTest::keyClick(desk.window.get(), Qt::Key_Escape);
        QVERIFY(!desk.window->isVisible());
    }

    void secondRun_beginsWithAFreshProgress()
    {
        Desk desk;
        desk.addFile("a.mp3", 44100 * 4);
        desk.convert("a.mp3", "a.wav");
        QCOMPARE(desk.percent(), QString("Progress  -  100%"));
        QStringList seen;
        desk.desk.messages.answer = zib::Messages::Answer::Yes;
        desk.desk.messages.onShow = [&](const QString&) {
            seen << desk.percent()
                 << QString::number(desk.window->findChild<QProgressBar*>("pbPer")->value());
        };
        desk.press("cmdConvert");
        QCOMPARE(seen.first(2), (QStringList{"Progress", "0"})); // at the question
    }

    void targetThatIsTheSource_isRefused_data()
    {
        QTest::addColumn<QString>("target");
        QTest::newRow("same") << "a.mp3";
        QTest::newRow("blanks") << "a.mp3  ";
        QTest::newRow("parts") << "sub/../a.mp3";
        QTest::newRow("symbolic link") << "link.wav";
        QTest::newRow("hard link") << "hard.wav";
        QTest::newRow("linked folder") << "linked/a.mp3";
    }
    void targetThatIsTheSource_isRefused()
    {
        QFETCH(QString, target);
        Desk desk;
        desk.addFile("a.mp3", 1000);
        QVERIFY(QDir(desk.folder.path()).mkdir("sub"));
        QVERIFY(QFile::link(desk.path("a.mp3"), desk.path("link.wav")));
        QVERIFY(QFile::link(desk.folder.path(), desk.path("linked")));
        QCOMPARE(::link(qPrintable(desk.path("a.mp3")), qPrintable(desk.path("hard.wav"))), 0);
        desk.shelf.calls.clear();
        desk.convert("a.mp3", target);
        QCOMPARE(desk.shelf.calls, QStringList());
        QCOMPARE(desk.shown().size(), 1);
        QVERIFY(desk.shown()[0].startsWith("i: The WAV file would replace the MP3 file itself."));
        QVERIFY(desk.button("cmdConvert")->isEnabled());
    }

    void existingTarget_isAskedFor_data()
    {
        QTest::addColumn<zib::Messages::Answer>("answer");
        QTest::newRow("yes") << zib::Messages::Answer::Yes;
        QTest::newRow("no") << zib::Messages::Answer::No;
        QTest::newRow("cancel") << zib::Messages::Answer::Cancel;
    }
    void existingTarget_isAskedFor()
    {
        QFETCH(zib::Messages::Answer, answer);
        Desk desk;
        desk.addFile("a.mp3", 1000);
        desk.addFile("old.wav", 10);
        desk.desk.messages.answer = answer;
        desk.convert("a.mp3", "old.wav");
        QCOMPARE(desk.shown()[0],
                 "q: The following WAV file exists already. Replace it?\n" + desk.path("old.wav"));
        QCOMPARE(desk.desk.messages.presets, QList{zib::Messages::Answer::No});
        QCOMPARE(desk.shelf.written.contains(desk.path("old.wav")), answer == zib::Messages::Answer::Yes);
        QCOMPARE(desk.shown().size(), answer == zib::Messages::Answer::Yes ? 2 : 1);
        QVERIFY(desk.button("cmdConvert")->isEnabled());
    }

    void existingTarget_chosenInTheSaveDialog_isReplaced()
    {
        Desk desk;
        desk.addFile("a.mp3", 1000);
        desk.addFile("old.wav", 10);
        desk.text("txtOpen")->setText(desk.path("a.mp3"));
        desk.desk.dialogs.files << desk.path("old.wav");
        desk.press("cmdSave");
        desk.press("cmdConvert");
        QCOMPARE(desk.shown(), QStringList{"i: Converting Completed."});
        QVERIFY(desk.shelf.written.contains(desk.path("old.wav")));
    }

    void linkedTarget_isWrittenWhereTheLinkLeads()
    {
        Desk desk;
        desk.addFile("a.mp3", 1000);
        QVERIFY(QFile::link(desk.path("real.wav"), desk.path("one.wav")));
        QVERIFY(QFile::link(desk.path("one.wav"), desk.path("two.wav")));
        desk.convert("a.mp3", "two.wav");
        QVERIFY(desk.shelf.written.contains(desk.path("real.wav")));
        QVERIFY(QFileInfo(desk.path("one.wav")).isSymLink());
        QVERIFY(QFileInfo(desk.path("two.wav")).isSymLink());
    }

    void protectedTarget_isLeft()
    {
        Desk desk;
        desk.addFile("a.mp3", 1000);
        desk.addFile("old.wav", 10);
        QFile::setPermissions(desk.path("old.wav"), QFile::ReadOwner | QFile::ReadGroup);
        desk.shelf.calls.clear();
        desk.convert("a.mp3", "old.wav");
        QVERIFY(desk.shelf.calls.isEmpty());
        QVERIFY(desk.shown()[0].startsWith("i: The following WAV file may not be written to"));
        QCOMPARE(desk.shown().size(), 1);
    }

    void unusableFolder_isToldOnceWithItsReason()
    {
        Desk desk;
        desk.addFile("a.mp3", 1000);
        desk.addFile("file", 1);
        desk.shelf.calls.clear();
        desk.convert("a.mp3", "file/deep/a.wav");
        QVERIFY(desk.shelf.calls.isEmpty());
        QCOMPARE(desk.shown(),
                 QStringList{"c: The WAV file cannot be made in this folder: a file of that name is "
                             "in the way.\n" +
                             desk.path("file/deep/")});
        QVERIFY(desk.button("cmdConvert")->isEnabled());
        QCOMPARE(desk.percent(), QString("Progress"));
    }

    void blanksAtTheEnds_makeNoStrayFolders()
    {
        Desk desk;
        desk.addFile("a.mp3", 1000);
        QTemporaryDir here;
        const QString before = QDir::currentPath();
        QDir::setCurrent(here.path());
        desk.text("txtOpen")->setText("  " + desk.path("a.mp3") + " ");
        desk.text("txtSave")->setText("  " + desk.path("My Album /a.wav") + " ");
        desk.press("cmdConvert");
        QDir::setCurrent(before);
        QCOMPARE(desk.shown(), QStringList{"i: Converting Completed."});
        QVERIFY(desk.shelf.written.contains(desk.path("My Album /a.wav")));
        QCOMPARE(QDir(here.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList());
        QCOMPARE(QDir(desk.folder.path()).entryList(QDir::Dirs | QDir::NoDotAndDotDot),
                 QStringList{"My Album "});
    }

    void sourceWhoseNameEndsInABlank_isFound()
    {
        Desk desk;
        desk.addFile("a ", 1000);
        desk.convert("a ", "a.wav");
        QVERIFY(desk.shelf.written.contains(desk.path("a.wav")));
    }

    void cmdOpen_moreNamesThanFit_saysWhatToDo()
    {
        Desk desk;
        desk.desk.dialogs.noFile.kind = zib::Failure::Kind::BadValue;
        desk.press("cmdOpen");
        QVERIFY(desk.text("txtOpen")->text().isEmpty());
        QVERIFY(desk.text("txtSave")->text().isEmpty());
        QVERIFY(QToolTip::text().startsWith("So many names do not fit in one choice."));
        QVERIFY(desk.shown().isEmpty());
    }

    void cmdConvert_aSecondTime_worksWithTheSamePaths()
    {
        Desk desk;
        desk.addFile("a.mp3", 1000);
        desk.convert("a.mp3", "a.wav");
        desk.desk.messages.answer = zib::Messages::Answer::Yes;
        desk.press("cmdConvert");
        QCOMPARE(desk.desk.messages.shown.count("i: Converting Completed."), 2);
    }

    void cmdConvert_explores_whenAsked_data()
    {
        QTest::addColumn<bool>("explore");
        QTest::newRow("yes") << true;
        QTest::newRow("no") << false;
    }
    void cmdConvert_explores_whenAsked()
    {
        QFETCH(bool, explore);
        Desk desk;
        OptionsData options = gOptions;
        options.ExploreAfterConverting = explore;
        zib::setOptions(options);
        desk.addFile("a.mp3", 1000);
        desk.convert("a.mp3", "a.wav");
        const QStringList expected{"explore " + desk.folder.path() + "/"};
        QCOMPARE(desk.desk.shell.calls, explore ? expected : QStringList());
    }

    void unreadableSource_isSilentButForTheCompletion()
    {
        Desk desk;
        desk.addFile("a.mp3", 1000);
        desk.shelf.sounds.clear();
        desk.convert("a.mp3", "a.wav");
        QCOMPARE(desk.desk.messages.shown, QStringList{"i: Converting Completed."});
        QVERIFY(!desk.shelf.calls.contains("create " + desk.path("a.wav")));
    }

    void refusedTarget_isSilentButForTheCompletion()
    {
        Desk desk;
        desk.addFile("a.mp3", 1000);
        desk.shelf.refusedTargets << desk.path("a.wav");
        desk.convert("a.mp3", "a.wav");
        QCOMPARE(desk.desk.messages.shown, QStringList{"i: Converting Completed."});
        QVERIFY(desk.shelf.calls.contains("close " + desk.path("a.mp3")));
        QVERIFY(!desk.shelf.calls.contains("close " + desk.path("a.wav")));
    }

    void brokenSource_leavesNoFileAndSaysSo()
    {
        Desk desk;
        desk.addFile("a.mp3", 200000).failAtSample = 100000;
        desk.convert("a.mp3", "a.wav");
        QCOMPARE(desk.shelf.discarded, QStringList{desk.path("a.wav")});
        QVERIFY(desk.shelf.written.isEmpty());
        QCOMPARE(desk.desk.messages.shown,
                 (QStringList{kNotConverted + desk.path("a.mp3"), "i: Converting Completed."}));
    }

    void fullDisk_leavesNoFileAndSaysSo()
    {
        Desk desk;
        desk.addFile("a.mp3", 200000);
        desk.shelf.blocksUntilDiskFull = 1;
        desk.convert("a.mp3", "a.wav");
        QCOMPARE(desk.shelf.discarded, QStringList{desk.path("a.wav")});
        QCOMPARE(desk.desk.messages.shown,
                 (QStringList{kNotConverted + desk.path("a.mp3"), "i: Converting Completed."}));
    }

    void blockBeyond32Bits_leavesNoFileAndSaysSo()
    {
        Desk desk;
        desk.addFile("a.mp3", 10).rateHz = 2000000000;
        desk.convert("a.mp3", "a.wav");
        QVERIFY(desk.shelf.written.isEmpty());
        QCOMPARE(desk.shelf.discarded, QStringList{desk.path("a.wav")});
        QCOMPARE(desk.desk.messages.shown,
                 (QStringList{kNotConverted + desk.path("a.mp3"), "i: Converting Completed."}));
    }

    void closing_whileConverting_endsItWithoutAFile()
    {
        Desk desk;
        desk.addFile("a.mp3", 44100 * 20);
        desk.beginGated("a.mp3", "a.wav");
        desk.gate.release();
        QTRY_COMPARE_WITH_TIMEOUT(desk.percent(), QString("Progress  -  5%"), 20'000);
        desk.press("CancelButton");
        QVERIFY(!desk.window->isVisible());
        QVERIFY(desk.finish("a.mp3"));
        QCOMPARE(desk.shelf.discarded, QStringList{desk.path("a.wav")});
        QVERIFY(desk.shelf.written.isEmpty());
        QTest::qWait(100);
        QVERIFY(desk.desk.messages.shown.isEmpty());
        QVERIFY(desk.desk.shell.calls.isEmpty());
    }

    void tab_visitsEveryControlInItsOrder()
    {
        const Desk desk;
        QApplication::setActiveWindow(desk.window.get());
        desk.text("txtOpen")->setFocus();
        QStringList visited;
        for (int i = 0; i < 7; ++i) {
            visited << desk.window->focusWidget()->objectName();
            QTest::keyClick(desk.window->focusWidget(), Qt::Key_Tab);
        }
        QCOMPARE(visited, (QStringList{"txtOpen", "cmdOpen", "txtSave", "cmdSave", "cmdConvert", "cmdOptions",
                                       "CancelButton"}));
    }
};

QTEST_MAIN(TestFrmMP3ToWAV)
#include "tst_frmMP3ToWAV.moc"
