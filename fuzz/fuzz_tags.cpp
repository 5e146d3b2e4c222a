// Tags of any bytes, at the beginning and the end of a file and in the chunks of a WAV file: what is read of
// them is a line of text.

#include "engines/audio/TagReader.h"
#include "input.h"

using zib::fuzz::check;

namespace {

void checkLine(const QString& text)
{
    check(text == text.trimmed() && text.size() <= 1000, "a name has no outer blanks, and an end");
    for (const QChar letter : text)
        check((letter < u'\n' || letter > u'\r') && letter != QChar::LineSeparator, "a name is one line");
}

void checkTag(const zib::Tag& tag)
{
    checkLine(tag.title);
    checkLine(tag.artist);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const zib::fuzz::InputFile input(data, size);
    const auto file = zib::SourceFile::open(input.path());
    if (!file)
        return 0;
    checkTag(zib::readId3v2(*file));
    checkTag(zib::readId3v1(*file));
    if (const auto header = zib::parseWav(*file))
        checkTag(zib::readWavTag(*file, *header));
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    check(!zib::plainTagText(bytes).contains(QChar::Null), "text ends where a zero stands");
    return 0;
}
