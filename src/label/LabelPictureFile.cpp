#include "label/LabelPictureFile.h"

#include <QImageReader>

#include <cmath>

namespace zib {

namespace {

/// Enough for 20,000 x 20,000 pixels of formats that can only be read whole.
constexpr int kReaderMegabytes = 1600;

/// Raises the readers' memory limit while a picture is read.
class ReaderLimit
{
public:
    ReaderLimit() : m_before(QImageReader::allocationLimit())
    {
        QImageReader::setAllocationLimit(kReaderMegabytes);
    }
    ~ReaderLimit() { QImageReader::setAllocationLimit(m_before); }
    Q_DISABLE_COPY_MOVE(ReaderLimit)

private:
    int m_before;
};

/// The size at which a picture of @p size pixels is kept.
QSize keptSize(QSize size)
{
    const double pixels = double(size.width()) * size.height();
    const double factor = std::sqrt(kMostPicturePixels / pixels);
    return (QSizeF(size) * factor).toSize().expandedTo(QSize(1, 1));
}

bool isLarge(QSize size)
{
    return qint64{size.width()} * size.height() > kMostPicturePixels;
}

} // namespace

Outcome<LabelPicture> readPicture(const QString& path)
{
    const ReaderLimit limit;
    QImageReader reader(path);
    reader.setAutoTransform(true);
    QSize size = reader.size();
    if (isLarge(size))
        reader.setScaledSize(keptSize(size));
    QImage image = reader.read();
    if (image.isNull())
        return Failure{
            Failure::Kind::UnreadableFile,
            QStringLiteral("The picture \"%1\" cannot be shown: %2.").arg(path, reader.errorString())};
    if (reader.transformation() & QImageIOHandler::TransformationRotate90)
        size.transpose();
    return LabelPicture{image, size.isValid() ? size : image.size()};
}

} // namespace zib
