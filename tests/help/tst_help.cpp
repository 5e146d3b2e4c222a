#include "burn/CDWriterAPI.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QHash>
#include <QImage>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

namespace {

const QStringList kWindows = {
    "frmMain",    "frmSplash",    "frmTip",       "frmAbout",      "frmOptions",  "frmPrepare",
    "frmWrite",   "frmRip",       "frmPlay",      "frmMP3ToWAV",   "frmPlayer",   "frmLabelDesigner",
    "frmPreview", "frmLabelList", "frmLabelBack", "frmLabelTitle", "frmCalibrate"};

/// The text a reader sees: tags gone, character references resolved, blanks and line ends joined.
QString visibleText(QString html)
{
    html.remove(
        QRegularExpression("<(style|title)[^>]*>.*?</\\1>", QRegularExpression::DotMatchesEverythingOption));
    html.replace(QRegularExpression("<[^>]*>"), " ");
    html.replace("&lt;", "<")
        .replace("&gt;", ">")
        .replace("&quot;", "\"")
        .replace("&nbsp;", " ")
        .replace("&amp;", "&");
    return html.simplified();
}

/// Every match of the expression's first group.
QStringList found(const QString& text, const QString& expression)
{
    QStringList all;
    auto matches =
        QRegularExpression(expression, QRegularExpression::CaseInsensitiveOption).globalMatch(text);
    while (matches.hasNext()) {
        all << matches.next().captured(1);
    }
    return all;
}

} // namespace

/// The compiled help, opened by a reader that is not its compiler.
class TestHelp : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void file_whenOpened_startsAtTheWelcomePage();
    void everyLink_leadsToAPageAndAPlaceInIt();
    void everyPicture_canBeSeen();
    void everyPage_isReachedFromTheWelcomePage();
    void everyPage_isWellFormed();
    void contents_namesEveryPage_once();
    void index_isSorted_andLeadsToPages();
    void everyWindow_hasItsPageWithItsPicture();
    void everyForm_hasAPage();
    void everyMessage_hasItsAdvice_data();
    void everyMessage_hasItsAdvice();
    void everyBoxOfTheSource_isInTheHelp();
    void everyWriterError_hasItsAdvice();

private:
    QString path(const QString& name) const { return m_folder.filePath(name); }
    QString page(const QString& name) const { return m_pages.value(name); }
    QString targetOf(const QString& from, const QString& link) const;
    QStringList linksOf(const QString& name) const;
    QString brokenLink(const QString& from, const QString& link) const;

    QTemporaryDir m_folder;
    QHash<QString, QString> m_pages; // path inside the file -> HTML
};

void TestHelp::initTestCase()
{
    const QString reader = QStandardPaths::findExecutable("extract_chmLib");
    if (reader.isEmpty()) {
        QSKIP("No CHM reader is installed (extract_chmLib of libchm-bin).");
    }
    QProcess extract;
    extract.start(reader, {ZIB_PROGRAM_DIR "/zibburn.chm", m_folder.path()});
    QVERIFY(extract.waitForFinished(120000));
    QCOMPARE(extract.exitCode(), 0);
    const QDir root(m_folder.path());
    QDirIterator files(m_folder.path(), {"*.html"}, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        QFile file(files.next());
        QVERIFY(file.open(QIODevice::ReadOnly));
        m_pages.insert(root.relativeFilePath(file.fileName()), QString::fromUtf8(file.readAll()));
    }
    QVERIFY(m_pages.size() > kWindows.size());
}

/// A link of a page as a path inside the file, with its "#place".
QString TestHelp::targetOf(const QString& from, const QString& link) const
{
    if (link.startsWith('#')) {
        return from + link;
    }
    const QString folder = from.contains('/') ? from.section('/', 0, -2) + "/" : QString();
    return QDir::cleanPath(folder + link);
}

QStringList TestHelp::linksOf(const QString& name) const
{
    return found(page(name), "\\b(?:href|src)\\s*=\\s*\"([^\"]*)\"");
}

/// @returns why the link leads nowhere, or an empty text.
QString TestHelp::brokenLink(const QString& from, const QString& link) const
{
    const QString target = targetOf(from, link);
    const QString file = target.section('#', 0, 0);
    if (link.contains(':') || !QFile::exists(path(file))) {
        return from + " links to " + link;
    }
    const QString place = target.section('#', 1);
    if (!place.isEmpty() && page(file).count("name=\"" + place + "\"") != 1) {
        return from + " links to a place that is not there once: " + link;
    }
    return {};
}

void TestHelp::file_whenOpened_startsAtTheWelcomePage()
{
    QFile system(path("#SYSTEM"));
    QVERIFY(system.open(QIODevice::ReadOnly));
    const QByteArray facts = system.readAll();
    QVERIFY(facts.contains("index.html"));
    QVERIFY(facts.contains("Zib CD Burner Help"));
    QVERIFY(facts.contains("contents.hhc"));
    QVERIFY(facts.contains("keywords.hhk"));
}

void TestHelp::everyLink_leadsToAPageAndAPlaceInIt()
{
    QStringList broken;
    int links = 0;
    for (auto it = m_pages.cbegin(); it != m_pages.cend(); ++it) {
        for (const QString& link : linksOf(it.key())) {
            ++links;
            broken << brokenLink(it.key(), link);
        }
    }
    broken.removeAll(QString());
    QVERIFY2(broken.isEmpty(), qPrintable(broken.join("; ")));
    QVERIFY(links > 100);
}

void TestHelp::everyPicture_canBeSeen()
{
    for (auto it = m_pages.cbegin(); it != m_pages.cend(); ++it) {
        for (const QString& source : found(it.value(), "<img[^>]*src=\"([^\"]*)\"")) {
            const QImage picture(path(targetOf(it.key(), source)));
            QVERIFY2(picture.width() > 100 && picture.height() > 60, qPrintable(source));
        }
        QCOMPARE(it.value().count("<img"), it.value().count(" alt=\""));
    }
}

void TestHelp::everyPage_isReachedFromTheWelcomePage()
{
    QSet<QString> reached;
    QStringList next{"index.html"};
    while (!next.isEmpty()) {
        const QString name = next.takeFirst();
        if (!m_pages.contains(name) || reached.contains(name)) {
            continue;
        }
        reached.insert(name);
        for (const QString& link : linksOf(name)) {
            next << targetOf(name, link).section('#', 0, 0);
        }
    }
    const QStringList pages = m_pages.keys();
    QCOMPARE(reached, QSet<QString>(pages.cbegin(), pages.cend()));
}

/// Tags close in the order in which they open, and the heading is the title.
void TestHelp::everyPage_isWellFormed()
{
    const QStringList single{"br", "img", "meta", "link", "hr"};
    for (auto it = m_pages.cbegin(); it != m_pages.cend(); ++it) {
        QStringList open;
        auto tags = QRegularExpression("<(/?)([a-z][a-z0-9]*)").globalMatch(it.value());
        while (tags.hasNext()) {
            const auto tag = tags.next();
            if (single.contains(tag.captured(2))) {
                continue;
            }
            if (tag.captured(1).isEmpty()) {
                open << tag.captured(2);
            } else {
                QVERIFY2(!open.isEmpty() && open.takeLast() == tag.captured(2),
                         qPrintable(it.key() + ": </" + tag.captured(2)));
            }
        }
        QVERIFY2(open.isEmpty(), qPrintable(it.key()));
        QCOMPARE(found(it.value(), "<h1>(.*?)</h1>"), found(it.value(), "<title>(.*?)</title>"));
    }
}

void TestHelp::contents_namesEveryPage_once()
{
    QFile file(path("contents.hhc"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QStringList named = found(QString::fromUtf8(file.readAll()), "name=\"Local\" value=\"([^\"]*)\"");
    QStringList pages = m_pages.keys();
    named.sort();
    pages.sort();
    QCOMPARE(named, pages);
}

void TestHelp::index_isSorted_andLeadsToPages()
{
    QFile file(path("keywords.hhk"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(file.readAll());
    QStringList words = found(text, "name=\"Name\" value=\"\\.?([^\"]*)\"");
    const QStringList places = found(text, "name=\"Local\" value=\"([^\"]*)\"");
    QCOMPARE(words.size(), places.size());
    QVERIFY(words.size() >= 60);
    for (const QString& place : places) {
        QCOMPARE(brokenLink("index.html", place), QString());
    }
    for (const QString& window : kWindows) {
        QVERIFY2(places.contains("windows/" + window + ".html"), qPrintable(window));
    }
    const QStringList asWritten = words;
    words.sort(Qt::CaseInsensitive);
    QCOMPARE(asWritten, words);
}

void TestHelp::everyWindow_hasItsPageWithItsPicture()
{
    for (const QString& window : kWindows) {
        const QString name = "windows/" + window + ".html";
        QVERIFY2(m_pages.contains(name), qPrintable(window));
        QVERIFY2(page(name).contains("src=\"../images/" + window + ".png\""), qPrintable(window));
        QVERIFY2(page("windows.html").contains("href=\"" + name + "\""), qPrintable(window));
        QVERIFY2(visibleText(page(name)).size() > 250, qPrintable(window));
    }
}

void TestHelp::everyForm_hasAPage()
{
    QDirIterator forms(ZIB_SOURCE_DIR "/src", {"frm*.ui"}, QDir::Files, QDirIterator::Subdirectories);
    while (forms.hasNext()) {
        const QString form = QFileInfo(forms.next()).baseName();
        QVERIFY2(m_pages.contains("windows/" + form + ".html"), qPrintable(form));
    }
}

void TestHelp::everyMessage_hasItsAdvice_data()
{
    QTest::addColumn<QString>("message");
    for (const char* text : {
             "There are no files in the list to write!",
             "The following file could not be added, it is not audio file\nor the audio type is not "
             "supported.",
             "There are no files in the list!\nPlease add some files first!",
             "The current selected row is already at the top,\nCan not move up any more!",
             "The current selected row is already at the bottom,\nCan not move down any more!",
             "There are no files in the list!",
             "There are no files checked in the list, \nplease check files to delete from the list!",
             "There are no files in the list to play.",
             "There are no files in the list, need not to save.",
             "The project could not be written. The file is as it was before.",
             "The disk does not answer, so the project may not have been written.",
             "The project was saved, but it cannot be opened again: it holds 201 files, and a project is "
             "opened "
             "with 200 at most.",
             "The project was saved, but 3 of the files have names that a project cannot hold. They will be "
             "missing when it is opened.",
             "An audio CD holds 99 tracks at most, and there are 120 files in the list.\nOnly the first 99 "
             "can be "
             "written.",
             "The following files could not be added, they are not audio files\nor the audio type is not "
             "supported.",
             "The following folders could not be read.",
             "The following projects could not be opened.",
             "So many names do not fit in one choice. Choose fewer files, or drop them on this window.",
             "Would you like to save this project?",
             "Create directory error: ",
             "These settings cannot be read, so their defaults are used:",
             "That the TIPOFDAY.TXT file was not found? \n\nCreate a text file named TIPOFDAY.TXT using "
             "NotePad "
             "with 1 tip per line. Then place it in the same directory as the application. ",
             "System Information Is Unavailable At This Time",
             "Your drives could not be initialized. ",
             "No drives installed on your computer or no drive selected.",
             "Please insert an empty disc and load the CDR-ROM for burning.",
             "Please load an empty CD or CDR/W for burning.",
             "Please insert an empty disc for burning.",
             "The software was set to \"Test Mode\" now. The test write mode will simulate the writing "
             "activity "
             "on the drive, but will not write actually. If you want to write actually, you may uncheck "
             "theitem \"Use Test Mode When Writing to CD\" from options.",
             "The following file could not be written to CD audio:",
             "Write to disc failed.",
             "Writing is completed.",
             "Writing Error: (3)",
             "Please check tracks to rip.",
             "Track #07 could not be added for extraction!",
             "Track #07 is a data track and cannot be extracted!",
             "Extraction could not be started.",
             "Audio Ripping Completed.",
             "Please open an MP3 file for converting.",
             "Please set a WAV file for saving the converted MP3 file.",
             "The following MP3 file does not exist.",
             "The following MP3 file could not be converted whole, so no WAV file was made.",
             "Converting Completed.",
         }) {
        QTest::newRow(QByteArray(text).left(40).constData()) << QString::fromUtf8(text);
    }
}

void TestHelp::everyMessage_hasItsAdvice()
{
    QFETCH(QString, message);
    QStringList rows = found(page("messages.html").simplified(), "<tr valign=\"top\">(.*?)</tr>");
    rows = rows.filter(QRegularExpression("^<td>"));
    const QString wanted = message.simplified();
    int advised = 0;
    for (const QString& row : rows) {
        const QStringList cells = found(row, "<td>(.*?)</td>");
        advised += cells.size() == 2 && visibleText(cells[0]) == wanted && visibleText(cells[1]).size() > 25;
    }
    QVERIFY2(advised >= 1, qPrintable(message));
}

/// A box that the source shows with a text of its own, or with a constant, stands among the messages.
void TestHelp::everyBoxOfTheSource_isInTheHelp()
{
    QString source;
    QDirIterator files(ZIB_SOURCE_DIR "/src", {"*.cpp", "*.h"}, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        QFile file(files.next());
        QVERIFY(file.open(QIODevice::ReadOnly));
        source += QString::fromUtf8(file.readAll());
    }
    const QString literal = R"RE(QStringLiteral\(((?:\s*"(?:[^"\\]|\\.)*")+))RE";
    QStringList literals = found(source, R"RE(essages(?:\.|->)\w+\([\w()]+,\s*)RE" + literal);
    for (const QString& name :
         found(source, R"RE((?:essages(?:\.|->)\w+\(|refuse\w*\()[\w(), ]*?(?:\w+::)?(k[A-Z]\w+))RE")) {
        literals << found(source, "\\b" + name + R"RE(\s*=\s*)RE" + literal);
    }
    const QString help = visibleText(page("messages.html"));
    QString missing;
    for (QString text : literals) {
        text.remove(QRegularExpression("\"\\s*\"")); // adjacent literals are one
        text = text.trimmed().chopped(1).mid(1).replace("\\n", " ").replace("\\\"", "\"");
        for (const QString& part : text.split(QRegularExpression("%\\d")))
            missing += help.contains(part.simplified()) ? QString() : text + '\n';
    }
    QVERIFY2(missing.isEmpty(), qPrintable(missing));
    QVERIFY2(literals.size() >= 12, qPrintable(QString::number(literals.size())));
}

void TestHelp::everyWriterError_hasItsAdvice()
{
    const QString text = page("writer-errors.html").simplified();
    const QStringList rows = found(text, "<tr valign=\"top\">(.*?)</tr>");
    QCOMPARE(rows.size(), 56 + 9); // nine more of other kinds follow
    for (int n = 0; n < 56; ++n) {
        const QStringList cells = found(rows[n], "<td>(.*?)</td>");
        QCOMPARE(cells.size(), 3);
        QCOMPARE(visibleText(cells[0]), QString::number(1000 + n));
        QCOMPARE(visibleText(cells[1]) + QString(" (%1).").arg(1000 + n),
                 CDWriterAPI::WriterErrorText(1000 + n));
        QVERIFY2(visibleText(cells[2]).size() > 25, qPrintable(rows[n]));
    }
}

QTEST_MAIN(TestHelp)
#include "tst_help.moc"
