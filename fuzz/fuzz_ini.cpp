// An INI file of any bytes is read, changed, and read again: the change is there, everything else is as it
// was, byte for byte, and every other key reads as before.

#include "platform/IniText.h"
#include "rules.h"

#include <QList>
#include <QString>

#include <cstdint>

using zib::IniText;
using zib::fuzz::check;

namespace {

/// A key to ask for.
struct Name
{
    QByteArray section;
    QByteArray key;
};

/// What may be asked of any file: the names that the seeds use, and odd ones.
const QList<Name>& names()
{
    static const QList<Name> list{
        {"s", "k"},
        {"S", "K"},
        {"t", "k"},
        {"s", "l"},
        {"View", "Grid Back Color"},
        {"s t", "k l"},
        {"\xC3\xA4", "\xC3\x96"},
        {"\xE4", "\xF6"},
        {"[s", "k"},
        {"s", "\"k\""},
        {"s", "k;"},
        {"", "k"},
        {"s", ""},
    };
    return list;
}

QList<std::optional<QByteArray>> valuesOf(const IniText& text)
{
    QList<std::optional<QByteArray>> values;
    for (const Name& name : names())
        values << text.value(name.section, name.key);
    return values;
}

bool sameName(const Name& one, const Name& other)
{
    const auto same = [](const QByteArray& a, const QByteArray& b) {
        return QString::fromUtf8(a).trimmed().compare(QString::fromUtf8(b).trimmed(), Qt::CaseInsensitive) ==
               0;
    };
    return same(one.section, other.section) && same(one.key, other.key);
}

/// What a value reads as: without outer blanks, then without one pair of quotes.
QByteArray asRead(QByteArray value)
{
    const auto blank = [](char letter) { return letter == ' ' || letter == '\t'; };
    while (!value.isEmpty() && blank(value.front()))
        value.remove(0, 1);
    while (!value.isEmpty() && blank(value.back()))
        value.chop(1);
    const bool quoted = value.size() > 1 && (value[0] == '"' || value[0] == '\'') && value.back() == value[0];
    return quoted ? value.mid(1, value.size() - 2) : value;
}

qsizetype commonStart(const QByteArray& a, const QByteArray& b)
{
    qsizetype n = 0;
    while (n < a.size() && n < b.size() && a[n] == b[n])
        ++n;
    return n;
}

qsizetype commonEnd(const QByteArray& a, const QByteArray& b, qsizetype start)
{
    qsizetype n = 0;
    while (n < a.size() - start && n < b.size() - start && a[a.size() - 1 - n] == b[b.size() - 1 - n])
        ++n;
    return n;
}

/// The bytes that went and the bytes that came, in one place.
void checkPlace(const QByteArray& before, const QByteArray& after, qsizetype mostBytes)
{
    const qsizetype start = commonStart(before, after);
    const qsizetype end = commonEnd(before, after, start);
    const QByteArray gone = before.mid(start, before.size() - start - end);
    const bool wide = before.contains('\0');
    check(wide || (!gone.contains('\n') && !gone.contains('\r')), "a write takes away no line end");
    check(after.size() - start - end <= mostBytes, "a write brings one section, key and value at most");
}

void checkWrite(const QByteArray& bytes, const Name& name, const QByteArray& value)
{
    IniText text(bytes);
    const auto before = valuesOf(text);
    const bool done = text.set(name.section, name.key, value);
    if (!done) {
        check(text.bytes() == bytes, "a refused write changes nothing");
        return;
    }
    const IniText again(text.bytes());
    const auto after = valuesOf(again);
    check(text.value(name.section, name.key) == again.value(name.section, name.key),
          "kept and read anew agree");
    check(again.value(name.section, name.key) == asRead(value), "what was written is read");
    for (qsizetype i = 0; i < names().size(); ++i)
        if (!sameName(names()[i], name))
            check(before[i] == after[i], "a write changes no other key");
    checkPlace(bytes, text.bytes(), 2 * (name.section.size() + name.key.size() + value.size() + 12));
    IniText twice(text.bytes());
    check(twice.set(name.section, name.key, value) && twice.bytes() == text.bytes(),
          "writing again changes nothing");
}

void checkDelete(const QByteArray& bytes, const Name& name)
{
    IniText text(bytes);
    const auto before = valuesOf(text);
    text.removeKey(name.section, name.key);
    const IniText again(text.bytes());
    const auto after = valuesOf(again);
    check(!again.value(name.section, name.key), "a deleted key is gone");
    for (qsizetype i = 0; i < names().size(); ++i)
        if (!sameName(names()[i], name))
            check(before[i] == after[i], "deleting a key changes no other");
    text.removeSection(name.section);
    check(!IniText(text.bytes()).value(name.section, "k"), "a deleted section is gone");
    check(text.bytes().size() <= bytes.size(), "deleting adds nothing");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const QByteArray own = bytes.right(12); // Part of the input is a value too.
    for (const QByteArray& value : {QByteArray("1"), QByteArray(), QByteArray(" \"a b\" ")})
        checkWrite(bytes, names()[0], value);
    for (const Name& name : {names()[0], names()[3], names()[4], names()[6]}) {
        checkWrite(bytes, name, own);
        checkDelete(bytes, name);
    }
    return 0;
}
