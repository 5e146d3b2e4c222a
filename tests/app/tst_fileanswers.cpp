#include "answers/Sweep.h"
#include "app/NaturalOrder.h"
#include "app/ProjectFile.h"
#include "app/TipList.h"
#include "app/totals.h"
#include "common/GeneralAPI.h"
#include "common/GenralMacro.h"
#include "fakes/FakeSeams.h"
#include "label/LabelMaker.h"
#include "label/LabelSettings.h"
#include "platform/IniFile.h"
#include "settings/OptionsFunc.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <limits>

using zib::answers::Answer;
using zib::answers::Book;
using namespace zib;

namespace {

/// The program's folder with a few sound files in it, and the real INI service. "~" in texts is that folder.
class Desk
{
public:
    Desk()
    {
        setApplicationFolder(folder.path());
        setSettingsFile(folder.filePath("settings.ini"));
        for (const char* name :
             {"a.wav", "b.wav", " c.wav", "d e.wav", "\xC3\xA4.wav", "\xE4.wav", "line\nbreak.wav"})
            put(QFile::encodeName(folder.path()) + '/' + name, "sound");
        QDir(folder.path()).mkdir("folder.wav");
    }
    ~Desk()
    {
        for (const QByteArray& file : std::as_const(m_made))
            ::remove(file.constData()); // names need not be text
    }
    Q_DISABLE_COPY_MOVE(Desk)

    QByteArray inFull(QByteArray text) const { return text.replace("~", QFile::encodeName(folder.path())); }
    QString inShort(QString text) const { return text.replace(folder.path(), "~"); }
    QString path(const char* name) const { return folder.filePath(name); }
    void put(const QByteArray& name, const QByteArray& content)
    {
        FILE* file = std::fopen(name.constData(), "wb");
        if (!file ||
            std::fwrite(content.constData(), 1, size_t(content.size()), file) != size_t(content.size()))
            qFatal("no file %s", name.constData());
        std::fclose(file);
        m_made << name;
    }
    QByteArray content(const QString& name) const
    {
        QFile file(name);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    IniFile ini;
    QTemporaryDir folder{"/dev/shm/zib-XXXXXX"};
    FakeDesk fakes{&ini};

private:
    QByteArrayList m_made;
};

const QByteArray kProject = "[General]\n"
                            "FileCount=6\n"
                            "[Files]\n"
                            "File1=~/a.wav\n"
                            "File2=b.wav\n"
                            "File3=\" c.wav\"\n"
                            "File4=file://~/d%20e.wav\n"
                            "File5= ~/missing.wav\n"
                            "File6=~/\xE4.wav\n";

/// The record field by field, as far as it differs from the defaults.
Answer wordsOf(const OptionsData& now)
{
    const OptionsData usual = OptionsFunc::defaults();
    Answer words;
    const auto tell = [&words](const char* name, const auto& value, const auto& other) {
        if (value != other)
            words << QString("%1: %2").arg(name).arg(value);
    };
#define ZIB_TELL(field) tell(#field, now.field, usual.field)
    ZIB_TELL(WAVFrequency);
    ZIB_TELL(WAVChannels);
    ZIB_TELL(WAVBits);
    ZIB_TELL(ShowToolBar);
    ZIB_TELL(ToolbarStyle3D);
    ZIB_TELL(ToolbarStyleFlat);
    ZIB_TELL(ShowTextOnToolbar);
    ZIB_TELL(ShowTipsOnToolbar);
    ZIB_TELL(ShowStatusbar);
    ZIB_TELL(ShowTipsOfDay);
    ZIB_TELL(ShowSplashScreen);
    ZIB_TELL(ShowGridLines);
    ZIB_TELL(GridBackColor);
    ZIB_TELL(GridTextColor);
    ZIB_TELL(WAVInput.trimmed());
    ZIB_TELL(WAVOutput.trimmed());
    ZIB_TELL(MP3Input.trimmed());
    ZIB_TELL(Temporary.trimmed());
    ZIB_TELL(CacheFilesLocally);
    ZIB_TELL(TestMode);
    ZIB_TELL(BufferProtection);
    ZIB_TELL(ExploreAfterConverting);
    ZIB_TELL(ExploreAfterRipping);
    ZIB_TELL(VerifyAfterWriting);
#undef ZIB_TELL
    return words;
}

const QList<std::pair<const char*, QList<const char*>>> kSettings{
    {"Wave", {"WAV Frequency", "WAV Channels", "WAV Bits"}},
    {"View",
     {"Show ToolBar", "Toolbar Style 3D", "Toolbar Style Flat", "Show Text On Toolbar",
      "Show Tips On Toolbar", "Show Statusbar", "Show Tips Of Day", "Show Splash Screen", "Show Grid Lines",
      "Grid Back Color", "Grid Text Color"}},
    {"Folders", {"WAV Input", "MP3 Input", "WAV Output", "Temporary"}},
    {"Misc",
     {"Buffer Protection", "Cache Files Locally", "Explore After Converting", "Explore After Ripping",
      "Test Mode", "Verify After Writing"}}};

QString numberOf(double number)
{
    return QString::number(number, 'g', 12);
}

} // namespace

/// What is read in the program's own files, projects, settings, tips and labels, and what is written,
/// recorded.
class TestFileAnswers : public QObject
{
    Q_OBJECT
    GlobalsScope m_globals;

private slots:
    void projects()
    {
        Desk desk;
        Book book("app/answers/projects");
        const auto read = [&desk](const QByteArray& text) {
            desk.put(QFile::encodeName(desk.path("list.zibp")), desk.inFull(text));
            const auto files = ProjectFile(desk.path("list.zibp")).read();
            if (!files)
                return Answer{QString("refused %1").arg(static_cast<int>(files.error().kind))};
            Answer words;
            for (qsizetype i = 0; i < files->size(); ++i)
                words << QString("file %1: %2").arg(i).arg(desk.inShort(files->at(i)));
            return words;
        };
        book.chapter("A project");
        book.tell("all", read(kProject));
        answers::everyLine(book, "Project", kProject, read);
        answers::everyNumber(book, "Project", kProject, read,
                             {"-1", "199", "200", "201", "2147483648", "6x", "6.0"});
        answers::everyLetter(book, "Project", kProject, read, {" ", "\"", "\n", "="});
        book.chapter("Values of a file");
        for (const char* value : {"a.wav",
                                  " a.wav",
                                  "\"a.wav\"",
                                  "'a.wav'",
                                  "\"'a.wav'\"",
                                  "c.wav",
                                  " c.wav",
                                  "\" c.wav\"",
                                  "d e.wav",
                                  "d%20e.wav",
                                  "file:///",
                                  "file://~/a.wav",
                                  "file:~/a.wav",
                                  "file://localhost~/a.wav",
                                  "http://~/a.wav",
                                  "~/folder.wav",
                                  "~/../nowhere/a.wav",
                                  "./a.wav",
                                  "",
                                  "\xC3\xA4.wav",
                                  "\xE4.wav",
                                  "file://~/line%0Abreak.wav",
                                  "file://~/%E4.wav",
                                  "A.WAV"})
            book.tell(QString::fromLatin1(value),
                      read(QByteArray("[General]\nFileCount=1\n[Files]\nFile1=") + value));
        ZIB_COMPARE_ANSWERS(book);
    }
    void projectsWritten()
    {
        Desk desk;
        Book book("app/answers/projectswritten");
        const QList<QStringList> lists{
            {},
            {"/a"},
            {"/a", "b", " c", "c ", "\"d\"", "'e'", "\"", "'f\""},
            {"", "/g\nh", "g\nh", "/i\r", "/\xC3\xA4", QString("/j") + QChar(0), "/\tk", "/l\t"},
            {QString("/") + QChar(0xD800), QString("/") + QChar(0xEFE4), "/%20", "/=", ";x", "[x]"}};
        book.chapter("Lists");
        for (qsizetype i = 0; i < lists.size(); ++i) {
            const QString path = desk.path("written.zibp");
            QFile::remove(path);
            const auto refused = ProjectFile(path).write(lists[i]);
            book.tell(QString::number(i), {QString("refused: %1").arg(refused ? refused->join('|') : "all"),
                                           QString::fromLatin1(desk.content(path))});
        }
        for (const char* place : {"missing/x.zibp", "folder.wav"}) {
            const auto written = ProjectFile(desk.path(place)).write({"/a"});
            book.tell(place, {written ? QString("written")
                                      : QString("kind %1").arg(static_cast<int>(written.error().kind))});
        }
        const auto read = ProjectFile(desk.path("missing.zibp")).read();
        book.tell("reading none", {QString("kind %1").arg(static_cast<int>(read.error().kind))});
        ZIB_COMPARE_ANSWERS(book);
    }
    void settings()
    {
        Desk desk;
        Book book("app/answers/settings");
        for (const auto& [section, keys] : kSettings)
            for (const char* key : keys) {
                book.chapter(QString("[%1] %2").arg(section, key));
                for (const char* value :
                     {"",           "0",           "1",           "-1",     "+7",     "-0",
                      "007",        "32767",       "32768",       "-32768", "-32769", "2147483647",
                      "2147483648", "-2147483648", "-2147483649", "1.0",    "0.0",    "0.1",
                      ".5",         "5.",          ".",           "1e3",    "x",      "True",
                      "FALSE",      "yes",         "True x",      "1 2"})
                    book.tell(QString("'%1'").arg(value), loaded(desk, section, key, value));
            }
        book.chapter("Long values");
        for (const int letters : {79, 80, 81, 1023, 1024, 1025, 2047, 2048})
            for (const char* key : {"WAV Output", "WAV Bits"}) {
                const char* section = QByteArray(key) == "WAV Bits" ? "Wave" : "Folders";
                const Answer words = loaded(desk, section, key, QByteArray(letters, 'q'));
                book.tell(
                    QString("%1 of %2").arg(key).arg(letters),
                    {QString::number(words.join("").count('q')), QString::number(gOptions.WAVOutput.size())});
            }
        ZIB_COMPARE_ANSWERS(book);
    }
    void labels()
    {
        Desk desk;
        Book book("app/answers/labels");
        for (const char* key : {"Disc Diameter", "Hub Hole"}) {
            book.chapter(key);
            for (const char* value :
                 {"",   "0",    "0.99", "1",     "1.01", "22",    "118", "299.99", "300", "300.01",
                  "-5", "22,5", "22.5", "2,2,5", "x",    "22 mm", "1e2", "nan",    "inf", "+30"}) {
                desk.put(QFile::encodeName(gSettingsFile), QByteArray("[Label]\n") + key + "=" + value);
                const DiscSize size = discSize();
                book.tell(QString("'%1'").arg(value), {numberOf(size.outer), numberOf(size.hub)});
            }
        }
        for (const char* key : {"Shift Across", "Shift Down", "Scale Across", "Scale Down"}) {
            book.chapter(key);
            for (const char* value : {"", "0", "-25.01", "-25", "24.99", "25", "25.01", "89.99", "90", "99,5",
                                      "110", "110.01", "x"}) {
                desk.put(QFile::encodeName(gSettingsFile),
                         QByteArray("[Label, P_1_, A4]\n") + key + "=" + value);
                book.tell(QString("'%1'").arg(value), numbersOf(calibrationFor("P[1]", "A4")));
            }
        }
        tellCalibration(desk, book);
        tellDocument(book);
        ZIB_COMPARE_ANSWERS(book);
    }
    void texts()
    {
        Desk desk;
        Book book("app/answers/apptexts");
        tellTimes(book);
        tellTips(book);
        book.chapter("Order of names");
        const QStringList names{"",
                                "0",
                                "00",
                                "1",
                                "01",
                                "2",
                                "10",
                                "a",
                                "A",
                                "a1",
                                "a01",
                                "a2",
                                "a10",
                                "a1b",
                                "a1b2",
                                "a-1",
                                "b",
                                "1a",
                                "10a",
                                "99999999999999999999",
                                "100000000000000000000"};
        for (const QString& one : names) {
            QStringList before;
            for (const QString& other : names)
                if (NaturalOrder()(one, other))
                    before << other;
            book.tell("'" + one + "' before", {before.join(", ")});
        }
        ZIB_COMPARE_ANSWERS(book);
    }

private:
    static Answer loaded(Desk& desk, const QByteArray& section, const QByteArray& key,
                         const QByteArray& value)
    {
        desk.put(QFile::encodeName(gSettingsFile), "[" + section + "]\n" + key + "=" + value);
        desk.fakes.messages.shown.clear();
        OptionsFunc::LoadSettings();
        Answer words = wordsOf(gOptions);
        for (const QString& box : std::as_const(desk.fakes.messages.shown))
            words << "box: " + desk.inShort(box).section("used:\n\n", 1).section("\n\n", 0, 0);
        return words.replaceInStrings(desk.folder.path(), "~");
    }
    static Answer numbersOf(const Calibration& calibration)
    {
        return {QString("%1 %2 %3 %4")
                    .arg(numberOf(calibration.shiftAcross), numberOf(calibration.shiftDown),
                         numberOf(calibration.scaleAcross), numberOf(calibration.scaleDown))};
    }
    static void tellCalibration(Desk& desk, Book& book)
    {
        book.chapter("Calibration stored, and what it does to a page");
        QFile::remove(gSettingsFile);
        const bool stored = storeCalibration("P[2]", "[A4]", {1.234, -2.345, 99.5, 101});
        book.tell("file", {stored ? "stored" : "not", QString::fromLatin1(desk.content(gSettingsFile))});
        book.tell("read", numbersOf(calibrationFor("P_2_", "_A4_")));
        const QTransform transform = Calibration{2, -1, 110, 95}.transform({100, 50});
        for (const QPointF point : {QPointF(0, 0), QPointF(-100, -50), QPointF(1440, 720)}) {
            const QPointF mapped = transform.map(point);
            book.tell(QString("%1 and %2").arg(point.x()).arg(point.y()),
                      {QString::number(mapped.x(), 'f', 3), QString::number(mapped.y(), 'f', 3)});
        }
        book.tell("lengths",
                  {numberOf(twipsFromMm(25.4)), numberOf(twipsFromMm(1)), numberOf(mmFromTwips(1440))});
    }
    static void tellDocument(Book& book)
    {
        const QList<CompilationRow> rows{{"1", "one.MP3", "", "x", "00:01:00", "1 KB", "/"},
                                         {"2", "two.wav.wav", " ", "", "", "", "/"},
                                         {"3", ".mp3", "Title", "y", "", "", "/"},
                                         {"4", " four.ogg ", "", "", "", "", "/"},
                                         {"5", "wav", "a#*_+{}b", "", "", "", "/"}};
        for (const bool filled : {true, false}) {
            LabelMaker::InitLabelDocument(filled ? rows : QList<CompilationRow>());
            book.chapter(filled ? "Cells of a label" : "Cells of an empty label");
            for (qint16 row = -1; row <= LabelMaker::LabelDocument.TableRows + 1; ++row) {
                QStringList cells;
                for (qint16 column = -1; column < 6; ++column)
                    cells << "'" + LabelMaker::GetCellText(row, column) + "'";
                book.tell(QString::number(row), {cells.join(' ')});
            }
        }
        book.chapter("Columns");
        for (qint16 column = -1; column < 8; ++column)
            book.tell(QString::number(column), {QString::number(LabelMaker::ColumnLeft(column))});
        book.tell("table",
                  {QString("%1 by %2").arg(LabelMaker::TotalColumnWidth()).arg(LabelMaker::TableHeight())});
        book.chapter("Long texts");
        const QString accent = QString("e") + QChar(0x301);
        for (const int letters : {254, 255, 256, 257, 300})
            for (const QString& end : {QString(), accent, QString::fromUtf8("\xF0\x9F\x98\x80")}) {
                LabelMaker::Document document;
                document.TitleText = QString(letters, 'q') + end;
                document.BackImagePath = QString(768 + letters, 'q') + end;
                LabelMaker::setLabelDocument(document);
                book.tell(QString("%1 and %2").arg(letters).arg(end),
                          {QString::number(LabelMaker::LabelDocument.TitleText.size()),
                           QString::number(LabelMaker::LabelDocument.BackImagePath.size())});
            }
    }
    static void tellTimes(Book& book)
    {
        book.chapter("Milliseconds as texts");
        for (const qint32 ms :
             {0, 9, 10, 999, 1'000, 59'999, 60'000, 5'999'999, 6'000'000, -1, -10, -61'010, 2'147'483'647})
            book.tell(QString::number(ms), {GeneralAPI::FormatDuration(ms)});
        book.chapter("Texts as minutes");
        for (const char* text : {"", "0", "00:00", "00:00:00", "01:30:50", "100:59:99", "-1:0:0", "a:0:0",
                                 "0:0:0:0", " 1: 2: 3", "1:2:3x"}) {
            const auto minutes = DurationTextToMinutes(text);
            book.tell(text, {minutes ? numberOf(*minutes) : QString("none")});
        }
        book.chapter("Minutes as texts");
        for (const double minutes : {0.0, 0.000083, 0.5, 74.0, 79.999, 35791.394, 35791.395, 40000.25, -1.0})
            book.tell(numberOf(minutes), {totalTimeText(minutes)});
        book.chapter("Bytes as texts");
        for (const qint64 bytes : {0LL, 1LL, 511LL, 512LL, 513LL, 1'023LL, 1'024LL, 1'023'487LL, 1'023'488LL,
                                   4'000'000'000LL, -1LL})
            book.tell(QString::number(bytes), {fileSizeText(bytes)});
    }
    static void tellTips(Book& book)
    {
        book.chapter("Tips");
        for (const char* text : {"", "\n", "a", "a\n", "a\n\n", "a\r\nb\rc\nd", "\r", "\r\n", "\n\na",
                                 "\xC3\xA4\n\xE4", "\xC3\xA4"})
            book.tell(QByteArray(text).replace('\n', "\\n").replace('\r', "\\r"),
                      {TipList::linesOf(text).join('|'), QString::number(TipList::linesOf(text).size())});
    }
};

QTEST_GUILESS_MAIN(TestFileAnswers)
#include "tst_fileanswers.moc"
