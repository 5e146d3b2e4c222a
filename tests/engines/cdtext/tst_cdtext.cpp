#include "engines/cdtext/CdText.h"
#include "engines/cdtext/Latin1Text.h"

#include <QRandomGenerator>
#include <QTest>

#include <cstdlib>

#include <libburn/libburn.h>

using zib::CdTextTable;
using zib::DiscNames;
using zib::TrackNames;

namespace {

/// Texts through libburn into packs, as a write makes them.
class BurnPacks
{
public:
    explicit BurnPacks(const CdTextTable& table)
    {
        burn::burn_initialize();
        m_disc = burn::burn_disc_create();
        m_session = burn::burn_session_create();
        burn::burn_disc_add_session(m_disc, m_session, BURN_POS_END);
        const qsizetype tracks = std::max(table.titles.size(), table.performers.size()) - 1;
        set(nullptr, "TITLE", table.titles.value(0), table.titles.isEmpty());
        set(nullptr, "PERFORMER", table.performers.value(0), table.performers.isEmpty());
        for (qsizetype i = 1; i <= tracks; ++i) {
            burn::burn_track* track = burn::burn_track_create();
            m_tracks << track;
            burn::burn_session_add_track(m_session, track, BURN_POS_END);
            set(track, "TITLE", table.titles.value(i), table.titles.isEmpty());
            set(track, "PERFORMER", table.performers.value(i), table.performers.isEmpty());
        }
    }
    ~BurnPacks()
    {
        for (burn::burn_track* track : m_tracks)
            burn::burn_track_free(track);
        burn::burn_session_free(m_session);
        burn::burn_disc_free(m_disc);
        burn::burn_finish();
    }

    /// Empty when the library cannot make them.
    QByteArray packs() const
    {
        unsigned char* bytes = nullptr;
        int count = 0;
        if (burn::burn_cdtext_from_session(m_session, &bytes, &count, 0) <= 0)
            return {};
        const QByteArray made(reinterpret_cast<const char*>(bytes), count * zib::kCdTextPackBytes);
        std::free(bytes);
        return made;
    }

private:
    void set(burn::burn_track* track, const char* kind, const QByteArray& text, bool none) const
    {
        if (none)
            return;
        auto* name = const_cast<char*>(kind);
        auto* bytes = reinterpret_cast<unsigned char*>(const_cast<char*>(text.constData()));
        const int length = static_cast<int>(text.size()) + 1;
        if (track)
            burn::burn_track_set_cdtext(track, 0, 0, name, bytes, length, 0);
        else
            burn::burn_session_set_cdtext(m_session, 0, 0, name, bytes, length, 0);
    }

    burn::burn_disc* m_disc = nullptr;
    burn::burn_session* m_session = nullptr;
    QList<burn::burn_track*> m_tracks;
};

/// A pack made by hand, with a right CRC.
QByteArray pack(int type, int track, int number, int position, const QByteArray& text)
{
    QByteArray made;
    for (const int byte : {type, track, number, position})
        made += static_cast<char>(byte);
    made += text.leftJustified(12, '\0', true);
    const quint16 crc = zib::cdTextCrc(made.constData());
    made += static_cast<char>(crc >> 8);
    made += static_cast<char>(crc & 0xFF);
    return made;
}

/// Names of so many tracks, each text so long, no two the same.
DiscNames namesOfLength(int tracks, int letters)
{
    DiscNames names{QStringLiteral("Album"), {}, {}};
    for (int i = 0; i < tracks; ++i) {
        const QString number = QStringLiteral("%1 ").arg(i + 1, 2, 10, QLatin1Char('0'));
        names.tracks << TrackNames{number + QString(letters - 3, u't'), number + QString(letters - 3, u'a')};
    }
    return names;
}

int packsMade(const CdTextTable& table)
{
    return static_cast<int>(BurnPacks(table).packs().size()) / zib::kCdTextPackBytes;
}

} // namespace

/// Names on their way to CD-TEXT packs and back.
class TestCdText : public QObject
{
    Q_OBJECT
private slots:
    void nearestLatin1_ofAnyScript_isReadable_data();
    void nearestLatin1_ofAnyScript_isReadable();
    void nearestLatin1_ofAnyLetter_hasNoQuestionMark();
    void namesOfDisc_whenAllTracksAgree_nameTheArtist();
    void table_ofNamelessTracks_isEmpty();
    void table_withOneName_holdsAnEntryForEveryTrack();
    void table_thatIsTooLong_shortensTheLongestOnly();
    void table_ofAnySize_fitsTheLibrarysBlock_data();
    void table_ofAnySize_fitsTheLibrarysBlock();
    void longTexts_endWhereReadersTakeThem();
    void packs_ofTheLibrary_comeBack();
    void packs_ofRandomNames_comeBack();
    void packs_withABadOne_loseOnlyItsTexts();
    void packs_ofADiscThatBeginsLater_nameItsTracks();
    void packs_inMsJis_areRead();
    void packs_inMsJis_withoutTheirSizes_areRead();
    void packs_inWindows1252_areRead();
    void packs_ofTheSecondBlock_areTakenWhenTheFirstIsEmpty();
    void packs_ofRandomBytes_areHarmless();
};

void TestCdText::nearestLatin1_ofAnyScript_isReadable_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("latin");
    QTest::newRow("plain") << "Song 1 (live)?" << QByteArray("Song 1 (live)?");
    QTest::newRow("in the set") << QStringLiteral("é ß ÿ ½") << QByteArray("\xE9 \xDF \xFF \xBD");
    QTest::newRow("composed") << QStringLiteral("e\u0301te\u0301") << QByteArray("\xE9t\xE9");
    QTest::newRow("Polish") << QStringLiteral("Łódź, świeży")
                            << QByteArray("L\xF3"
                                          "dz, swiezy");
    QTest::newRow("Russian") << QStringLiteral("Щука, мир") << QByteArray("Shchuka, mir");
    QTest::newRow("Ukrainian") << QStringLiteral("Київ") << QByteArray("Ki\xEDv");
    QTest::newRow("Greek") << QStringLiteral("Ελλάδα")
                           << QByteArray("Ell\xE1"
                                         "da");
    QTest::newRow("kana") << QStringLiteral("ひらがな カタカナ") << QByteArray("hiragana katakana");
    QTest::newRow("Hangul") << QStringLiteral("한국") << QByteArray("hangug");
    QTest::newRow("quotes") << QStringLiteral("“a” – b…") << QByteArray("\"a\" - b...");
    QTest::newRow("full width") << QStringLiteral("ｆｕｌｌ１") << QByteArray("full1");
    QTest::newRow("trade mark") << QStringLiteral("A™") << QByteArray("ATM");
    QTest::newRow("picture") << QStringLiteral("\U0001F3B5 song \U0001F3B5") << QByteArray("song");
    QTest::newRow("blanks") << QStringLiteral(" a\t\nb\u00A0c\u2003d\u00AD ") << QByteArray("a b c d");
    QTest::newRow("controls") << QStringLiteral("a\u0001\u007F\u0085z") << QByteArray("a z");
    QTest::newRow("controls between blanks") << QStringLiteral("a \u0001 z") << QByteArray("a z");
    QTest::newRow("empty") << QString() << QByteArray();
}

void TestCdText::nearestLatin1_ofAnyScript_isReadable()
{
    QFETCH(QString, text);
    QTEST(zib::nearestLatin1(text), "latin");
}

void TestCdText::nearestLatin1_ofAnyLetter_hasNoQuestionMark()
{
    for (char32_t letter = 0x40; letter < 0x11000; letter += 7) {
        const QString text = QString::fromUcs4(&letter, 1);
        if ((letter >= 0xD800 && letter < 0xE000) ||
            text.normalized(QString::NormalizationForm_KC).contains(u'?'))
            continue;
        const QByteArray latin = zib::nearestLatin1(text);
        QVERIFY2(!latin.contains('?') && !latin.contains('\0'), QByteArray::number(letter, 16));
    }
}

void TestCdText::namesOfDisc_whenAllTracksAgree_nameTheArtist()
{
    const TrackNames one{"One", "Choir"};
    QCOMPARE(zib::namesOfDisc("Disc", {one, {"Two", "Choir"}}).artist, "Choir");
    QCOMPARE(zib::namesOfDisc("Disc", {one, {"Two", "choir"}}).artist, QString());
    QCOMPARE(zib::namesOfDisc("Disc", {one, {"Two", ""}}).artist, QString());
    QCOMPARE(zib::namesOfDisc("Disc", {}).artist, QString());
    QCOMPARE(zib::namesOfDisc("Disc", {one}).title, "Disc");
}

void TestCdText::table_ofNamelessTracks_isEmpty()
{
    QVERIFY(zib::cdTextOf({"Disc", {}, {{}, {}}}).isEmpty());
    QVERIFY(zib::cdTextOf({"Disc", {}, {}}).isEmpty());
}

void TestCdText::table_withOneName_holdsAnEntryForEveryTrack()
{
    const CdTextTable table = zib::cdTextOf({{}, {}, {{}, {"Two", {}}, {}}});
    QCOMPARE(table.titles, (QList<QByteArray>{"", "", "Two", ""}));
    QVERIFY(table.performers.isEmpty());
    const CdTextTable artists = zib::cdTextOf({"Disc", {}, {{{}, "A"}, {}}});
    QCOMPARE(artists.titles, (QList<QByteArray>{"Disc", "", ""}));
    QCOMPARE(artists.performers, (QList<QByteArray>{"", "A", ""}));
}

void TestCdText::table_thatIsTooLong_shortensTheLongestOnly()
{
    DiscNames names = namesOfLength(99, 24);
    names.tracks[4] = {"Short", "Brief"};
    const CdTextTable table = zib::cdTextOf(names);
    QCOMPARE(table.titles.size(), 100);
    QCOMPARE(table.performers.size(), 100);
    QCOMPARE(table.titles[5], "Short");
    QCOMPARE(table.performers[5], "Brief");
    QCOMPARE(table.titles[0], "Album");
    const qsizetype length = table.titles[1].size();
    QVERIFY2(length < 24 && length > 10, QByteArray::number(length));
    for (const QList<QByteArray>& texts : {table.titles, table.performers})
        for (qsizetype i = 1; i < texts.size(); ++i)
            if (i != 5)
                QCOMPARE(texts[i].size(), length);
    QVERIFY(zib::textPackCount(table) <= zib::kMostTextPacks);
    QVERIFY(zib::textPackCount(table) > zib::kMostTextPacks - 2 * 99 / 12 - 2);
}

void TestCdText::table_ofAnySize_fitsTheLibrarysBlock_data()
{
    QTest::addColumn<int>("tracks");
    QTest::addColumn<int>("letters");
    for (const int tracks : {1, 2, 10, 20, 21, 50, 98, 99})
        for (const int letters : {4, 11, 12, 14, 15, 16, 40, 160, 900})
            QTest::addRow("%d tracks of %d letters", tracks, letters) << tracks << letters;
}

void TestCdText::table_ofAnySize_fitsTheLibrarysBlock()
{
    QFETCH(int, tracks);
    QFETCH(int, letters);
    const CdTextTable table = zib::cdTextOf(namesOfLength(tracks, letters));
    QCOMPARE(packsMade(table), zib::textPackCount(table) + 3);
}

void TestCdText::longTexts_endWhereReadersTakeThem()
{
    const CdTextTable table = zib::cdTextOf({{}, {}, {{QString(161, u'x'), QString(160, u'y')}}});
    QCOMPARE(table.titles[1], QByteArray(160, 'x'));
    QCOMPARE(table.performers[1], QByteArray(160, 'y'));
}

void TestCdText::packs_ofTheLibrary_comeBack()
{
    const DiscNames names{"Disc",
                          "Choir",
                          {{"One", "Choir"},
                           {QStringLiteral("Zwölf Männer boxen"), "Choir"},
                           {"", "Choir"},
                           {"Four", ""},
                           {"Four", "Choir"},
                           {"Four", "Choir"}}};
    const QByteArray packs = BurnPacks(zib::cdTextOf(names)).packs();
    QCOMPARE(zib::namesInPacks(packs, 1, 6).value(), names);
}

void TestCdText::packs_ofRandomNames_comeBack()
{
    QRandomGenerator random(7);
    for (int round = 0; round < 300; ++round) {
        DiscNames names;
        const int tracks = random.bounded(1, 30);
        const auto text = [&random] {
            return QString(random.bounded(0, 30), QChar(random.bounded(0x61, 0x64)));
        };
        names.title = text();
        for (int i = 0; i < tracks; ++i)
            names.tracks << TrackNames{text(), text()};
        const CdTextTable table = zib::cdTextOf(names);
        QCOMPARE(packsMade(table), table.isEmpty() ? 0 : zib::textPackCount(table) + 3);
        if (!table.isEmpty())
            QCOMPARE(zib::namesInPacks(BurnPacks(table).packs(), 1, tracks).value(), names);
    }
}

void TestCdText::packs_withABadOne_loseOnlyItsTexts()
{
    const DiscNames names{
        "", "", {{QString(30, u'a'), ""}, {QString(30, u'b'), ""}, {QString(30, u'c'), ""}}};
    QByteArray packs = BurnPacks(zib::cdTextOf(names)).packs();
    // The fourth pack holds the middle of the second title.
    packs[3 * zib::kCdTextPackBytes + 8] = 'x';
    const DiscNames read = zib::namesInPacks(packs, 1, 3).value();
    QCOMPARE(read.tracks[0].title, names.tracks[0].title);
    QCOMPARE(read.tracks[1].title, QString());
    QCOMPARE(read.tracks[2].title, names.tracks[2].title);
}

void TestCdText::packs_ofADiscThatBeginsLater_nameItsTracks()
{
    const QByteArray packs = pack(0x80, 0, 0, 0, QByteArray("D\0Five\0Six\0", 11));
    const QByteArray later =
        pack(0x80, 0, 0, 0, QByteArray("D\0", 2)) + pack(0x80, 5, 1, 0, QByteArray("Five\0Six\0", 9));
    QCOMPARE(zib::namesInPacks(packs, 1, 2)->tracks[1].title, "Six");
    QCOMPARE(zib::namesInPacks(later, 5, 2)->tracks[0].title, "Five");
    QCOMPARE(zib::namesInPacks(later, 5, 2)->tracks[1].title, "Six");
    QCOMPARE(zib::namesInPacks(later, 5, 2)->title, "D");
}

void TestCdText::packs_inMsJis_areRead()
{
    const QByteArray name("\x83\x4A\x83\x69", 4); // ka na
    const QByteArray packs =
        pack(0x80, 0, 0, 0x80, QByteArray("\0\0", 2) + name + QByteArray("\0\0\t\t\0\0", 6)) +
        pack(0x8F, 0, 1, 0x80, QByteArray("\x80\x01\x02", 3));
    const DiscNames names = zib::namesInPacks(packs, 1, 2).value();
    QCOMPARE(names.tracks[0].title, QStringLiteral("カナ"));
    QCOMPARE(names.tracks[1].title, QStringLiteral("カナ"));
}

/// Packs of double bytes say so themselves; the pack that names the letters may be damaged.
void TestCdText::packs_inMsJis_withoutTheirSizes_areRead()
{
    const QByteArray name("\x83\x4A\x83\x69", 4); // ka na
    const QByteArray packs = pack(0x80, 0, 0, 0x80, QByteArray("\0\0", 2) + name + QByteArray("\0\0", 2));
    QCOMPARE(zib::namesInPacks(packs, 1, 1)->tracks[0].title, QStringLiteral("カナ"));
}

void TestCdText::packs_inWindows1252_areRead()
{
    const QByteArray packs = pack(0x80, 0, 0, 0, QByteArray("\0Don\x92t \x96 \xE9\0", 11));
    QCOMPARE(zib::namesInPacks(packs, 1, 1)->tracks[0].title, QStringLiteral("Don’t – é"));
}

void TestCdText::packs_ofTheSecondBlock_areTakenWhenTheFirstIsEmpty()
{
    const QByteArray packs =
        pack(0x80, 0, 0, 0x00, QByteArray(12, '\0')) + pack(0x80, 0, 0, 0x10, QByteArray("Disc\0One\0", 9));
    QCOMPARE(zib::namesInPacks(packs, 1, 1)->tracks[0].title, "One");
    QVERIFY(!zib::namesInPacks(packs.left(18), 1, 1));
    QVERIFY(!zib::namesInPacks(packs.left(17), 1, 1));
}

void TestCdText::packs_ofRandomBytes_areHarmless()
{
    QRandomGenerator random(11);
    for (int round = 0; round < 2000; ++round) {
        QByteArray packs;
        for (int i = random.bounded(0, 20); i > 0; --i) {
            QByteArray text(12, '\0');
            for (char& byte : text)
                byte = static_cast<char>(random.bounded(0, 3) ? random.bounded(0, 256) : 0);
            packs +=
                pack(0x80 + random.bounded(0, 16), random.bounded(0, 256), i, random.bounded(0, 256), text);
        }
        zib::namesInPacks(packs, random.bounded(1, 99), random.bounded(0, 99));
    }
}

QTEST_GUILESS_MAIN(TestCdText)
#include "tst_cdtext.moc"
