#include "engines/cdtext/Latin1Text.h"

#include <algorithm>
#include <memory>

#include <unicode/translit.h>
#include <unicode/unistr.h>

namespace zib {

namespace {

/// Each step touches only what ISO 8859-1 does not hold. Composed letters come first, so that a base letter
/// and its accent become the one letter that the set may have; Russian is spelled as English readers know it.
constexpr char16_t kRules[] = u":: NFC;"
                              u":: [^\\u0000-\\u00FF] Russian-Latin/BGN;"
                              u":: [^\\u0000-\\u00FF] Any-Latin;"
                              u":: [^\\u0000-\\u00FF] NFKC;"
                              u":: [^\\u0000-\\u00FF] Latin-ASCII;"
                              u"[^\\u0000-\\u00FF] > ;";

std::unique_ptr<icu::Transliterator> makeTransliterator()
{
    UErrorCode status = U_ZERO_ERROR;
    UParseError where;
    std::unique_ptr<icu::Transliterator> made(
        icu::Transliterator::createFromRules("Latin1", kRules, UTRANS_FORWARD, where, status));
    return U_SUCCESS(status) ? std::move(made) : nullptr;
}

/// The text spelled in the first 256 letters of Unicode. Making the rules takes longer than a hundred texts.
QString spelledInLatin1(const QString& text)
{
    thread_local const std::unique_ptr<icu::Transliterator> transliterator = makeTransliterator();
    icu::UnicodeString letters(reinterpret_cast<const char16_t*>(text.utf16()),
                               static_cast<int32_t>(text.size()));
    if (transliterator)
        transliterator->transliterate(letters);
    return QString::fromUtf16(letters.getBuffer(), letters.length());
}

QString converted(QByteArrayView bytes, const char* encoding)
{
    const icu::UnicodeString text(bytes.data(), static_cast<int32_t>(bytes.size()), encoding);
    return QString::fromUtf16(text.getBuffer(), text.length());
}

/// Soft hyphens and control characters are nothing that a player shows.
bool isShown(char16_t letter)
{
    return (letter >= 0x20 && letter < 0x7F) || (letter > 0x9F && letter <= 0xFF && letter != 0xAD);
}

} // namespace

QByteArray nearestLatin1(const QString& text)
{
    const bool fits = std::all_of(text.cbegin(), text.cend(), [](QChar c) { return c.unicode() <= 0xFF; });
    QString shown;
    for (const QChar letter : (fits ? text : spelledInLatin1(text)).simplified())
        if (isShown(letter.unicode()))
            shown += letter;
    return shown.simplified().toLatin1(); // What is not shown may have stood between two blanks.
}

QString textFromLatin1(QByteArrayView bytes)
{
    const bool isWindows = std::any_of(bytes.cbegin(), bytes.cend(), [](char byte) {
        return static_cast<uchar>(byte) >= 0x80 && static_cast<uchar>(byte) <= 0x9F;
    });
    return isWindows ? converted(bytes, "windows-1252") : QString::fromLatin1(bytes);
}

QString textFromMsJis(QByteArrayView bytes)
{
    return converted(bytes, "ibm-943_P15A-2003");
}

} // namespace zib
