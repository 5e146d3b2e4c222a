#include "faces/PlainFont.h"

#include <QByteArray>
#include <QFontDatabase>
#include <QList>

#include <utility>

namespace zib {

namespace {

// The tables of a TrueType font, as the OpenType specification lays them out.

constexpr quint16 kUnits = 1000; ///< To the height of the font.
constexpr quint16 kAscent = 750;
constexpr quint16 kDescent = 250;
constexpr quint16 kAdvance = 500;
constexpr quint16 kGlyphs = 3; ///< The missing one, a box for every letter, and the blank.
constexpr quint32 kMagic = 0x5F0F3CF5;

/// Numbers in the order of the net.
class Table
{
public:
    Table& u16(quint32 number) { return u8(number >> 8).u8(number); }
    Table& u32(quint32 number) { return u16(number >> 16).u16(number); }
    Table& u16s(std::initializer_list<int> numbers)
    {
        for (const int number : numbers)
            u16(static_cast<quint32>(number));
        return *this;
    }
    Table& bytes(const QByteArray& more)
    {
        m_bytes += more;
        return *this;
    }
    const QByteArray& data() const { return m_bytes; }

private:
    Table& u8(quint32 number)
    {
        m_bytes += static_cast<char>(number & 0xFF);
        return *this;
    }

    QByteArray m_bytes;
};

QByteArray padded(QByteArray bytes)
{
    return bytes.append((4 - bytes.size() % 4) % 4, '\0');
}

quint32 checkSum(const QByteArray& table)
{
    const QByteArray whole = padded(table);
    quint32 sum = 0;
    for (qsizetype i = 0; i < whole.size(); i += 4)
        for (int byte = 0; byte < 4; ++byte)
            sum += quint32{static_cast<quint8>(whole[i + byte])} << (24 - 8 * byte);
    return sum;
}

QByteArray head()
{
    return Table()
        .u32(0x10000)
        .u32(0x10000)
        .u32(0)
        .u32(kMagic)
        .u16s({3, kUnits})
        .bytes(QByteArray(16, '\0'))
        .u16s({0, -kDescent, kAdvance, kAscent, 0, 8, 2, 0, 0})
        .data();
}

QByteArray horizontalHeader()
{
    return Table()
        .u32(0x10000)
        .u16s({kAscent, -kDescent, 0, kAdvance, 0, 0, kAdvance, 1, 0, 0, 0, 0, 0, 0, 0, 1})
        .data();
}

QByteArray maximums()
{
    return Table().u32(0x10000).u16s({kGlyphs, 4, 1, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0}).data();
}

QByteArray widths()
{
    return Table().u16s({kAdvance, 0, 0, 0}).data();
}

/// A box that fills the room of its letter between the line and the ascent.
QByteArray box()
{
    return padded(Table()
                      .u16s({1, 0, 0, kAdvance, kAscent, 3, 0})
                      .bytes("\1\1\1\1")
                      .u16s({0, kAdvance, 0, -kAdvance, 0, 0, kAscent, 0})
                      .data());
}

QByteArray places()
{
    const int end = static_cast<int>(box().size() / 2);
    return Table().u16s({0, 0, end, end}).data();
}

/// Every character has the box but for the blanks: many to one (format 13).
QByteArray characters()
{
    Table groups;
    groups.u32(0x20).u32(0x20).u32(2);
    groups.u32(0x21).u32(0x9F).u32(1);
    groups.u32(0xA0).u32(0xA0).u32(2);
    groups.u32(0xA1).u32(0xFFFD).u32(1);
    return Table()
        .u16s({0, 1, 3, 10})
        .u32(12)
        .u16s({13, 0})
        .u32(16 + 4 * 12)
        .u32(0)
        .u32(4)
        .bytes(groups.data())
        .data();
}

QByteArray names()
{
    const QList<std::pair<int, QString>> texts{
        {1, kPlainFont}, {2, "Regular"}, {4, kPlainFont}, {6, "ZibPlain"}};
    Table records;
    Table storage;
    for (const auto& [number, text] : texts) {
        records.u16s({3, 1, 0x409, number, static_cast<int>(text.size() * 2),
                      static_cast<int>(storage.data().size())});
        for (const QChar letter : text)
            storage.u16(letter.unicode());
    }
    const int count = static_cast<int>(texts.size());
    return Table().u16s({0, count, 6 + 12 * count}).bytes(records.data()).bytes(storage.data()).data();
}

QByteArray metrics()
{
    Table table;
    table.u16s({4, kAdvance, 400, 5, 0, 500, 500, 0, 0, 500, 500, 0, 350, 50, 250, 0})
        .bytes(QByteArray(10, '\0'));
    table.u32(1).u32(0).u32(0).u32(0).bytes("ZIB ");
    table.u16s({0x40, 0x20, 0xFFFD, kAscent, -kDescent, 0, kAscent, kDescent}).u32(1).u32(0);
    return table.u16s({500, 750, 0, 0x20, 0}).data();
}

QByteArray file()
{
    const QList<std::pair<QByteArray, QByteArray>> tables{
        {"OS/2", metrics()},
        {"cmap", characters()},
        {"glyf", box()},
        {"head", head()},
        {"hhea", horizontalHeader()},
        {"hmtx", widths()},
        {"loca", places()},
        {"maxp", maximums()},
        {"name", names()},
        {"post", Table().u32(0x30000).u32(0).u16s({-100, 50}).u32(1).bytes(QByteArray(16, '\0')).data()}};
    Table directory;
    directory.u32(0x10000).u16s({static_cast<int>(tables.size()), 128, 3, 32});
    QByteArray body;
    const auto start = static_cast<quint32>(12 + 16 * tables.size());
    for (const auto& [tag, table] : tables) {
        directory.bytes(tag)
            .u32(checkSum(table))
            .u32(start + static_cast<quint32>(body.size()))
            .u32(static_cast<quint32>(table.size()));
        body += padded(table);
    }
    return directory.data() + body;
}

} // namespace

QFont plainFont()
{
    static const int id = QFontDatabase::addApplicationFontFromData(file());
    if (id < 0)
        qFatal("The plain font was not taken.");
    QFont font(QString::fromLatin1(kPlainFont));
    font.setPointSizeF(12); // Which is 16 pixels off screen, at 96 dots to the inch.
    font.setHintingPreference(QFont::PreferNoHinting);
    return font;
}

} // namespace zib
