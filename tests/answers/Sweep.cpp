#include "answers/Sweep.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <limits>

namespace zib::answers {

namespace {

using Told = QList<std::pair<QString, Answer>>;

QString inHex(int byte)
{
    return QStringLiteral("%1").arg(byte, 2, 16, QChar(u'0')).toUpper();
}

Answer withByte(QByteArray input, qsizetype at, int value, const Reader& read)
{
    input[at] = static_cast<char>(value);
    return read(input);
}

QByteArray withField(QByteArray input, const Field& field, qint64 value)
{
    for (int i = 0; i < field.bytes; ++i) {
        const int place = field.isBigEndian ? field.bytes - 1 - i : i;
        input[field.at + place] = static_cast<char>(value >> (8 * i));
    }
    return input;
}

QByteArray joined(const QByteArrayList& lines)
{
    return lines.join('\n');
}

} // namespace

void everyLength(Book& book, const QString& title, const QByteArray& seed, const Reader& read, qsizetype from)
{
    book.chapter(title + QStringLiteral(", cut off behind so many bytes"), read(seed));
    for (qsizetype length = from; length <= seed.size(); ++length)
        book.tell(QString::number(length), read(seed.first(length)));
}

void everyByte(Book& book, const QString& title, const QByteArray& seed, const Reader& read, qsizetype from,
               qsizetype count)
{
    book.chapter(title + QStringLiteral(", one byte changed"), read(seed));
    for (qsizetype at = from; at < from + count; ++at) {
        const int was = static_cast<uchar>(seed[at]);
        Told told;
        for (const int value : {0x00, 0x01, 0x7F, 0x80, 0xFF})
            told.append({inHex(value), withByte(seed, at, value, read)});
        told.append({QStringLiteral("-1"), withByte(seed, at, was - 1, read)});
        told.append({QStringLiteral("+1"), withByte(seed, at, was + 1, read)});
        for (int bit = 0; bit < 8; ++bit)
            told.append({QStringLiteral("~%1").arg(bit), withByte(seed, at, was ^ 1 << bit, read)});
        book.tellAll(QString::number(at), told);
    }
}

void everyValue(Book& book, const QString& title, const QByteArray& seed, const Reader& read,
                const Field& field, const QList<qint64>& values)
{
    book.chapter(title + QStringLiteral(", ") + field.name, read(seed));
    qint64 told = std::numeric_limits<qint64>::min();
    for (const qint64 value : values)
        for (const qint64 beside : {value - 1, value, value + 1})
            if (beside > told) {
                book.tell(QString::number(beside), read(withField(seed, field, beside)));
                told = beside;
            }
}

void everyLetter(Book& book, const QString& title, const QByteArray& seed, const Reader& read,
                 const QByteArrayList& others)
{
    book.chapter(title + QStringLiteral(", one letter of a line changed"), read(seed));
    int line = 1;
    qsizetype lineAt = 0;
    for (qsizetype at = 0; at < seed.size(); ++at) {
        Told told{{QStringLiteral("gone"), read(QByteArray(seed).remove(at, 1))},
                  {QStringLiteral("twice"), read(QByteArray(seed).insert(at, seed[at]))}};
        for (const QByteArray& other : others)
            told.append({QString::fromLatin1(other), read(QByteArray(seed).replace(at, 1, other))});
        book.tellAll(QStringLiteral("%1.%2").arg(line).arg(at - lineAt + 1), told);
        if (seed[at] == '\n') {
            ++line;
            lineAt = at + 1;
        }
    }
}

void everyLine(Book& book, const QString& title, const QByteArray& seed, const Reader& read)
{
    book.chapter(title + QStringLiteral(", one line changed"), read(seed));
    const QByteArrayList lines = seed.split('\n');
    for (qsizetype at = 0; at < lines.size(); ++at) {
        QByteArrayList gone = lines;
        gone.removeAt(at);
        QByteArrayList twice = lines;
        twice.insert(at, lines[at]);
        QByteArrayList later = lines;
        later.move(at, std::min(at + 1, lines.size() - 1));
        book.tellAll(QString::number(at + 1), {{QStringLiteral("gone"), read(joined(gone))},
                                               {QStringLiteral("twice"), read(joined(twice))},
                                               {QStringLiteral("later"), read(joined(later))}});
    }
}

void everyNumber(Book& book, const QString& title, const QByteArray& seed, const Reader& read,
                 const QByteArrayList& others)
{
    static const QRegularExpression number(QStringLiteral("\\d+"));
    book.chapter(title + QStringLiteral(", one number changed"), read(seed));
    const QString text = QString::fromLatin1(seed);
    for (auto found = number.globalMatch(text); found.hasNext();) {
        const auto match = found.next();
        const auto with = [&](const QByteArray& digits) {
            return read(QByteArray(seed).replace(match.capturedStart(), match.capturedLength(), digits));
        };
        const qint64 was = match.captured().toLongLong();
        const auto width = static_cast<int>(match.capturedLength());
        const auto padded = [width](qint64 value) {
            return QByteArray::number(value).rightJustified(width, '0');
        };
        Told told{{QStringLiteral("0"), with(padded(0))}, {QStringLiteral("+1"), with(padded(was + 1))}};
        if (was > 0)
            told.append({QStringLiteral("-1"), with(padded(was - 1))});
        for (const QByteArray& other : others)
            told.append({QString::fromLatin1(other), with(other)});
        const auto line = seed.first(match.capturedStart()).count('\n') + 1;
        book.tellAll(QStringLiteral("line %1, %2").arg(line).arg(match.captured()), told);
    }
}

void everyKept(Book& book, const QString& name, const Reader& read)
{
    QFile file(QStringLiteral(ZIB_TESTS_DIR "/%1.inputs").arg(name));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("cannot read %s", qPrintable(file.fileName()));
    book.chapter(QStringLiteral("Kept inputs, by their lines"));
    const QByteArrayList lines = file.readAll().split('\n');
    for (qsizetype i = 0; i < lines.size(); ++i)
        if (!lines[i].isEmpty() && !lines[i].startsWith('#'))
            book.tell(QString::number(i + 1), read(QByteArray::fromBase64(lines[i])));
}

void everySeed(Book& book, const QString& name, const Reader& read)
{
    const QDir folder(QStringLiteral(ZIB_TESTS_DIR "/../fuzz/seeds/") + name);
    book.chapter(QStringLiteral("Seeds of the fuzz target"));
    for (const QString& seed : folder.entryList(QDir::Files, QDir::Name)) {
        QFile file(folder.filePath(seed));
        if (!file.open(QIODevice::ReadOnly))
            qFatal("cannot read %s", qPrintable(file.fileName()));
        book.tell(seed, read(file.readAll()));
    }
}

} // namespace zib::answers
