#include "engines/audio/AudioKit.h"
#include "engines/audio/TagReader.h"
#include "engines/audio/makers.h"

#include <QStringEncoder>
#include <QTemporaryDir>
#include <QTest>

using namespace zib;

namespace {

QByteArray syncSafe(qsizetype value)
{
    QByteArray bytes;
    for (const int shift : {21, 14, 7, 0})
        bytes += static_cast<char>(value >> shift & 0x7F);
    return bytes;
}

QByteArray big32(qsizetype value)
{
    QByteArray bytes;
    for (const int shift : {24, 16, 8, 0})
        bytes += static_cast<char>(value >> shift);
    return bytes;
}

// A text frame of ID3v2.2, 2.3 or 2.4 whose text is encoded already.
QByteArray frame(int version, const QByteArray& name, char encoding, const QByteArray& text)
{
    const QByteArray content = QByteArray(1, encoding) + text;
    if (version == 2)
        return name + big32(content.size()).last(3) + content;
    return name + (version == 4 ? syncSafe(content.size()) : big32(content.size())) + QByteArray(2, '\0') +
           content;
}

QByteArray id3v2(int version, const QByteArray& frames)
{
    return "ID3" + QByteArray(1, static_cast<char>(version)) + QByteArray(2, '\0') + syncSafe(frames.size()) +
           frames;
}

QByteArray titled(int version, char encoding, const QByteArray& title)
{
    return id3v2(version, frame(version, version == 2 ? "TT2" : "TIT2", encoding, title) +
                              frame(version, version == 2 ? "TP1" : "TPE1", 0, "Artist"));
}

QByteArray id3v1(const QByteArray& title, const QByteArray& artist)
{
    return "TAG" + title.leftJustified(30, '\0', true) + artist.leftJustified(30, '\0', true) +
           QByteArray(65, '\0');
}

QByteArray utf16(const QString& text, bool isBig, bool hasMark)
{
    QStringEncoder encoder(isBig ? QStringEncoder::Utf16BE : QStringEncoder::Utf16LE);
    const QByteArray plain = encoder.encode(text);
    const QByteArray mark = isBig ? QByteArray("\xFE\xFF", 2) : QByteArray("\xFF\xFE", 2);
    return hasMark ? mark + plain : plain;
}

const QString kMixed = QString::fromUtf8("Größe Łódź カラオケ 🎵");

} // namespace

/// Titles and artists from every kind of tag.
class TestTags : public QObject
{
    Q_OBJECT
    QTemporaryDir m_folder;

    QByteArray sound() const
    {
        return kit::contentOf(
            kit::lameFile("mpeg1-44-plain-cbr", 7 * 44100 + 777, 2, 44100, {"-b", "128", "-t"}));
    }
    std::unique_ptr<AudioInformation> opened(const QByteArray& content)
    {
        const QString path = m_folder.filePath("tagged");
        kit::write(path, content);
        auto information = makeAudioInformation();
        return information->open(path) ? std::move(information) : nullptr;
    }

private slots:
    void id3v2_inEveryEncoding_isRead_data()
    {
        QTest::addColumn<int>("version");
        QTest::addColumn<int>("encoding");
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("title");
        const QString latin = QString::fromUtf8("Größe");
        for (const int version : {2, 3, 4}) {
            QTest::addRow("2.%d Latin-1", version) << version << 0
                                                   << QByteArray("Gr\xF6\xDF"
                                                                 "e")
                                                   << latin;
            QTest::addRow("2.%d UTF-16 little", version)
                << version << 1 << utf16(kMixed, false, true) << kMixed;
            QTest::addRow("2.%d UTF-16 big", version) << version << 1 << utf16(kMixed, true, true) << kMixed;
            QTest::addRow("2.%d UTF-8 called Latin-1", version) << version << 0 << kMixed.toUtf8() << kMixed;
            QTest::addRow("2.%d quotes of Windows", version)
                << version << 0 << QByteArray("\x93Hi\x94") << QString::fromUtf8("“Hi”");
            QTest::addRow("2.%d blanks around", version)
                << version << 0 << QByteArray("  Song \0") << QString("Song");
        }
        QTest::newRow("2.4 UTF-16BE") << 4 << 2 << utf16(kMixed, true, false) << kMixed;
        QTest::newRow("2.4 UTF-8") << 4 << 3 << kMixed.toUtf8() << kMixed;
        QTest::newRow("a megabyte") << 4 << 3 << QByteArray(1 << 20, 'x') << QString(1000, 'x');
        QTest::newRow("a thousand letters of two units each")
            << 4 << 3 << "x" + QString::fromUtf8("\U0001D11E").repeated(600).toUtf8()
            << "x" + QString::fromUtf8("\U0001D11E").repeated(499);
        QTest::newRow("several lines") << 4 << 3 << QByteArray("\n First \r\nSecond") << "First";
        QTest::newRow("several paragraphs")
            << 4 << 3 << QString("First" + QString(QChar::ParagraphSeparator) + "Second").toUtf8() << "First";
        QTest::newRow("Cyrillic called Latin-1 stays unharmed")
            << 3 << 0 << QByteArray("\xCF\xF0\xE8") << QString::fromUtf8("Ïðè");
    }
    void id3v2_inEveryEncoding_isRead()
    {
        QFETCH(int, version);
        QFETCH(int, encoding);
        QFETCH(QByteArray, text);
        QFETCH(QString, title);
        const auto information = opened(titled(version, static_cast<char>(encoding), text) + sound());
        QVERIFY(information);
        QCOMPARE(information->title(), title);
        QCOMPARE(information->artist(), QString("Artist"));
        QCOMPARE(information->tagTitle(AudioInformation::TagKind::Main), title);
        QCOMPARE(information->tagTitle(AudioInformation::TagKind::Old), QString());
    }
    void id3v1_alone_isTheOldTag()
    {
        const auto information = opened(sound() + id3v1("Gr\xF6\xDF"
                                                        "e   ",
                                                        "Someone"));
        QVERIFY(information);
        QCOMPARE(information->tagTitle(AudioInformation::TagKind::Main), QString());
        QCOMPARE(information->tagTitle(AudioInformation::TagKind::Old), QString::fromUtf8("Größe"));
        QCOMPARE(information->title(), QString::fromUtf8("Größe"));
        QCOMPARE(information->artist(), QString("Someone"));
    }
    void id3v1_cutInsideALetter_losesOnlyThatLetter()
    {
        const QByteArray title = QString::fromUtf8("123456789 123456789 1234567żó").toUtf8().first(30);
        const auto information = opened(sound() + id3v1(title, "A"));
        QVERIFY(information);
        QCOMPARE(information->title(), QString::fromUtf8("123456789 123456789 1234567ż"));
    }
    void bothTags_mainGoesFirst_fieldByField()
    {
        const QByteArray onlyTitle = id3v2(3, frame(3, "TIT2", 0, "New"));
        const auto information = opened(onlyTitle + sound() + id3v1("Old", "Old artist"));
        QVERIFY(information);
        QCOMPARE(information->title(), QString("New"));
        QCOMPARE(information->tagTitle(AudioInformation::TagKind::Old), QString("Old"));
        QCOMPARE(information->artist(), QString("Old artist"));
    }
    void tags_doNotChangeTheLength()
    {
        const auto plain = opened(sound());
        const auto tagged = opened(titled(4, 0, "x") + titled(3, 0, "y") + sound() + id3v1("a", "b"));
        QVERIFY(plain && tagged);
        QCOMPARE(tagged->durationMs(), plain->durationMs());
        const QByteArray footer = "APETAGEX" + QByteArray("\xD0\x07\0\0\x20\0\0\0", 8) + QByteArray(16, '\0');
        const auto ape = opened(sound() + footer + id3v1("a", "b"));
        QVERIFY(ape);
        QCOMPARE(ape->durationMs(), plain->durationMs());
    }
    /// What stands in each of them would pass for sound.
    void tagsBehindTheSound_areNone_data()
    {
        QTest::addColumn<QByteArray>("tag");
        const QByteArray inside = sound();
        const auto little32 = [](qsizetype value) {
            QByteArray bytes = big32(static_cast<quint32>(value));
            std::reverse(bytes.begin(), bytes.end());
            return bytes;
        };
        const auto ape = [&](const char* flags) {
            return "APETAGEX" + little32(2000) + little32(inside.size() + 32) + little32(1) +
                   QByteArray(flags, 4) + QByteArray(8, '\0');
        };
        QTest::newRow("APE") << inside + ape("\0\0\0\0");
        QTest::newRow("APE with a header") << ape("\0\0\0\xA0") + inside + ape("\0\0\0\x80");
        const QByteArray lyrics = "LYRICSBEGIN" + inside;
        QTest::newRow("lyrics") << lyrics + QByteArray::number(lyrics.size()).rightJustified(6, '0') +
                                       "LYRICS200";
        QByteArray sevenBits;
        for (int shift = 21; shift >= 0; shift -= 7)
            sevenBits += static_cast<char>(inside.size() >> shift & 0x7F);
        const QByteArray head = QByteArray("\x04\0\x10", 3) + sevenBits;
        QTest::newRow("ID3 with a footer") << "ID3" + head + inside + "3DI" + head;
    }
    void tagsBehindTheSound_areNone()
    {
        QFETCH(QByteArray, tag);
        const auto plain = opened(sound());
        for (const QByteArray& content :
             {sound() + tag, sound() + tag + id3v1("a", "b"), sound() + tag + tag}) {
            const auto tagged = opened(content);
            QVERIFY(tagged);
            QCOMPARE(tagged->durationMs(), plain->durationMs());
        }
    }
    void damagedTags_areHarmless_data()
    {
        QTest::addColumn<QByteArray>("tag");
        const QByteArray good = titled(3, 0, "Song");
        QTest::newRow("size beyond the file")
            << good.left(6) + QByteArray("\x7F\x7F\x7F\x7F", 4) + good.mid(10);
        QTest::newRow("frame size beyond the tag")
            << id3v2(3, "TIT2" + big32(1'000'000) + QByteArray(3, '\0') + "x");
        QTest::newRow("only a header") << id3v2(4, {});
        QTest::newRow("unknown version") << "ID3" + QByteArray("\x09\0\0\0\0\0\x05", 7) + "abcde";
        QTest::newRow("size with high bits") << "ID3" + QByteArray("\x03\0\0\xFF\xFF\xFF\xFF", 7);
        QTest::newRow("unknown encoding") << id3v2(3, frame(3, "TIT2", 77, "Song"));
        QTest::newRow("half a letter of UTF-16")
            << id3v2(3, frame(3, "TIT2", 1, QByteArray("\xFF\xFE\x41", 3)));
    }
    void damagedTags_areHarmless()
    {
        QFETCH(QByteArray, tag);
        const auto plain = opened(sound());
        const auto information = opened(tag + sound());
        QVERIFY(information);
        QCOMPARE(information->durationMs(), plain->durationMs());
    }
    void wavInfo_inEveryEncoding_isRead_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("title");
        QTest::newRow("UTF-8") << kMixed.toUtf8() << kMixed;
        QTest::newRow("Latin-1") << QByteArray("Gr\xF6\xDF"
                                               "e")
                                 << QString::fromUtf8("Größe");
        QTest::newRow("with a zero") << QByteArray("Song\0rest", 9) << QString("Song");
        QTest::newRow("odd length") << QByteArray("abc") << QString("abc");
    }
    void wavInfo_inEveryEncoding_isRead()
    {
        QFETCH(QByteArray, text);
        QFETCH(QString, title);
        const QByteArray info = "INFO" + kit::chunk("INAM", text) + kit::chunk("IART", "Artist");
        const QByteArray basic = kit::chunk("fmt ", kit::format(1, 1, 44100, 16));
        for (const QByteArray& chunks :
             {kit::chunk("LIST", info) + kit::chunk("data", QByteArray(200, '\0')),
              kit::chunk("data", QByteArray(200, '\0')) + kit::chunk("LIST", info)}) {
            const auto information = opened(kit::riff(basic + chunks));
            QVERIFY(information);
            QCOMPARE(information->title(), title);
            QCOMPARE(information->artist(), QString("Artist"));
            QCOMPARE(information->tagTitle(AudioInformation::TagKind::Main), title);
        }
    }
    void wavId3Chunk_completesTheInfo()
    {
        const QByteArray basic =
            kit::chunk("fmt ", kit::format(1, 1, 44100, 16)) + kit::chunk("data", QByteArray(200, '\0'));
        const auto alone =
            opened(kit::riff(basic + kit::chunk("id3 ", titled(3, 1, utf16(kMixed, false, true)))));
        QVERIFY(alone);
        QCOMPARE(alone->title(), kMixed);
        QCOMPARE(alone->artist(), QString("Artist"));
        const auto both = opened(kit::riff(basic + kit::chunk("LIST", "INFO" + kit::chunk("INAM", "Info")) +
                                           kit::chunk("ID3 ", titled(3, 0, "Other"))));
        QVERIFY(both);
        QCOMPARE(both->title(), QString("Info"));
        QCOMPARE(both->artist(), QString("Artist"));
    }
    void wavInfo_thatIsDamaged_isHarmless()
    {
        const QByteArray basic =
            kit::chunk("fmt ", kit::format(1, 1, 44100, 16)) + kit::chunk("data", QByteArray(200, '\0'));
        const QByteArray lying = "INFO" + QByteArray("INAM\xFF\xFF\xFF\x7F"
                                                     "abc");
        const auto information = opened(kit::riff(basic + kit::chunk("LIST", lying)));
        QVERIFY(information);
        QCOMPARE(information->title(), QString("abc"));
    }
    void tagsOfAnotherProgram_areRead()
    {
        const QString mp3 = m_folder.filePath("other.mp3");
        const QString wav = m_folder.filePath("other.wav");
        const QStringList tags{"-metadata", "title=" + kMixed, "-metadata", "artist=" + kMixed};
        const QStringList source{"-y", "-f", "lavfi", "-i", "sine=d=1"};
        QVERIFY(kit::run("ffmpeg", source + tags + QStringList{mp3}));
        QVERIFY(kit::run("ffmpeg", source + tags + QStringList{wav}));
        const auto information = makeAudioInformation();
        for (const QString& path : {mp3, wav}) {
            QVERIFY(information->open(path));
            QCOMPARE(information->title(), kMixed);
            QCOMPARE(information->artist(), kMixed);
        }
    }
};

QTEST_GUILESS_MAIN(TestTags)
#include "tst_tags.moc"
