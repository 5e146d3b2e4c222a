// An INI file of any bytes is read, changed, and read again: the change is there, everything else is as it
// was, byte for byte, and every other key reads as before.

#include "platform/IniText.h"
#include "rules.h"

#include <QList>
#include <QString>

#include <cstdint>

using zib::IniName;
using zib::IniText;
using zib::fuzz::check;

namespace {

/// What may be asked of any file: the names that the seeds use, and odd ones.
const QList<IniName>& names()
{
    static const QList<IniName> list{
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
    return text.values(names());
}

/// Asking for one value, and for it among many in one pass over the text, is the same.
void checkAsking(const IniText& text, qsizetype which)
{
    const IniName& name = names()[which];
    check(text.value(name.section, name.key) == valuesOf(text)[which], "one answer and many agree");
}

bool sameName(const IniName& one, const IniName& other)
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

void checkWrite(const QByteArray& bytes, const IniName& name, const QByteArray& value)
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

void checkDelete(const QByteArray& bytes, const IniName& name)
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

// Every change reads the text a dozen times, so an input tries one of them: its length says which.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static constexpr qsizetype kChanged[] = {0, 3, 4, 6};
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const QByteArray values[] = {"1", "", " \"a b\" ", bytes.right(12)}; // Part of the input is a value too.
    const qsizetype which = kChanged[size % 4];
    checkAsking(IniText(bytes), which);
    checkWrite(bytes, names()[which], values[size / 4 % 4]);
    checkDelete(bytes, names()[which]);
    return 0;
}
