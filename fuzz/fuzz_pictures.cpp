// Pictures for labels of any bytes: a picture has pixels, and no more than are kept in memory; what is none
// is refused in a sentence.

#include "input.h"
#include "label/LabelPictureFile.h"

#include <QFile>
#include <QImageReader>
#include <QLoggingCategory>

using zib::fuzz::check;

namespace {

/// A few bytes can claim a picture that takes the machine's memory, and its time with it.
bool isSmall(const QString& path)
{
    constexpr qint64 kMostPixels = 1'000'000;
    QImageReader reader(path);
    const QSize size = reader.size();
    return qint64{size.width()} * size.height() <= kMostPixels;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const bool quiet = (QLoggingCategory::setFilterRules(QStringLiteral("qt.gui.*=false")), true);
    Q_UNUSED(quiet)
    const zib::fuzz::InputFile input(data, size);
    if (!isSmall(input.path()))
        return 0;
    const auto picture = zib::readPicture(input.path());
    if (!picture) {
        check(picture.error().detail.endsWith(u'.'), "a refusal is a sentence");
        return 0;
    }
    check(!picture->image.isNull() && !picture->size.isEmpty(), "a picture has pixels");
    check(qint64{picture->image.width()} * picture->image.height() <= zib::kMostPicturePixels * 1.01,
          "a picture is kept in memory as small as said");
    return 0;
}
