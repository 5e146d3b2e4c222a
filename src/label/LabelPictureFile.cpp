#include "label/LabelPictureFile.h"

#include "common/NativeName.h"
#include "common/WaitPointer.h"
#include "common/Worker.h"

#include <QApplication>
#include <QDateTime>
#include <QFile>
#include <QImageReader>
#include <QLocale>
#include <QPointer>
#include <QtEndian>

#include <algorithm>
#include <chrono>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <future>
#include <optional>

namespace zib {

namespace {

constexpr qint64 kBytesPerMegabyte = 1024 * 1024;
constexpr int kReaderMegabytes = static_cast<int>(kMostPictureBytes / kBytesPerMegabyte + 1);
constexpr double kMostCountedBytes = 9e18;
constexpr int kUsualDepth = 32; ///< Bits to the pixel, where the file does not tell.
constexpr std::chrono::milliseconds kAtOnce{80};
constexpr std::chrono::seconds kReadingPatience{120}; ///< The largest picture from a slow stick is there.

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

/// The size that a bitmap's header claims (BITMAPINFOHEADER), which the reader keeps to itself when it finds
/// it too large; nothing for any other file.
QSize claimedSize(const QString& path)
{
    constexpr qsizetype kWidthAt = 18;
    constexpr qsizetype kHeightAt = 22;
    QFile file(path);
    const QByteArray head = file.open(QIODevice::ReadOnly) ? file.read(kHeightAt + 4) : QByteArray();
    if (head.size() < kHeightAt + 4 || !head.startsWith("BM"))
        return {};
    const auto number = [&head](qsizetype at) { // Below 0 a height is from top to bottom.
        return std::abs(std::max(qFromLittleEndian<qint32>(head.constData() + at), -INT_MAX));
    };
    return {number(kWidthAt), number(kHeightAt)};
}

/// Bits to the pixel of the picture that is being read. Of a damaged file, whose size cannot be told either,
/// the toolkit would answer with whatever stands in its memory.
int depthOf(const QImageReader& reader)
{
    if (!reader.size().isValid() || reader.imageFormat() == QImage::Format_Invalid)
        return kUsualDepth;
    return QImage::toPixelFormat(reader.imageFormat()).bitsPerPixel();
}

/// The memory that decoding takes. A JPEG file is read scaled down, all others whole.
qint64 bytesFor(const QImageReader& reader, QSize size)
{
    const int depth = depthOf(reader);
    const QSize read = reader.format() == "jpeg" && isLarge(size) ? keptSize(size) : size;
    const double bytes = double(read.width()) * read.height() * std::max(depth, kUsualDepth) / 8;
    return static_cast<qint64>(std::clamp(bytes, 0.0, kMostCountedBytes)); // A header may claim any size.
}

Failure tooLarge(const QString& path, QSize size, qint64 bytes)
{
    const QLocale locale(QLocale::English);
    return {Failure::Kind::UnreadableFile,
            QStringLiteral(
                "The picture \"%1\" is too large: %2 x %3 pixels take %4 MB, and at most %5 MB can be used. "
                "Save it with fewer pixels.")
                .arg(path, locale.toString(size.width()), locale.toString(size.height()),
                     locale.toString(bytes / kBytesPerMegabyte),
                     locale.toString(kMostPictureBytes / kBytesPerMegabyte))};
}

Failure noAnswer(const QString& path)
{
    return {Failure::Kind::UnreadableFile,
            QStringLiteral("The picture \"%1\" cannot be shown: its disk or network place does not answer.")
                .arg(path)};
}

/// A file at one moment.
struct FileState
{
    bool isThere = false;
    QDateTime time;
    qint64 bytes = 0;

    bool operator==(const FileState&) const = default;
};

FileState stateOf(const QString& path)
{
    QFile file;
    if (openForReading(file, path))
        return {true, file.fileTime(QFileDevice::FileModificationTime), file.size()};
    return {isFile(path), {}, 0};
}

/// What a file is; nothing when its place does not answer in time. An answer that comes at once lets no event
/// through.
std::optional<FileState> lookAt(Worker& worker, const QString& path, QObject* owner,
                                std::chrono::milliseconds patience)
{
    const auto look = std::make_shared<std::packaged_task<FileState()>>([path] { return stateOf(path); });
    const std::shared_future<FileState> seen = look->get_future().share();
    worker.post([look] { (*look)(); });
    if (seen.wait_for(kAtOnce) == std::future_status::ready)
        return seen.get();
    return worker.ask<FileState>(
        owner, [seen] { return seen.get(); }, patience);
}

/// The picture that somebody holds now, and the file as it was read.
struct Shelf
{
    QString path;
    FileState state;
    std::weak_ptr<const LabelPicture> picture;
};

using SharedPicture = std::shared_ptr<const LabelPicture>;

/// Reads a file for the shelf.
Outcome<SharedPicture> fetch(Worker& worker, const QString& path, const FileState& state, QObject* owner,
                             Shelf& shelf)
{
    const QPointer<QObject> asker(owner);
    const auto read = worker.ask<Outcome<LabelPicture>>(
        owner, [path] { return readPicture(path); }, kReadingPatience);
    if (!asker)
        return Failure{Failure::Kind::Cancelled};
    if (!read)
        return noAnswer(path);
    if (!*read)
        return read->error();
    const auto picture = std::make_shared<const LabelPicture>(read->value());
    shelf = {path, state, picture};
    return picture;
}

} // namespace

Outcome<LabelPicture> readPicture(const QString& path)
{
    const ReaderLimit limit;
    QFile file(path);
    QImageReader reader(path);
    if (openForReading(file, path))
        reader.setDevice(&file);
    reader.setAutoTransform(true);
    QSize size = reader.size().isValid() ? reader.size() : claimedSize(path);
    if (const qint64 bytes = bytesFor(reader, size); bytes > kMostPictureBytes)
        return tooLarge(path, size, bytes);
    if (isLarge(size))
        reader.setScaledSize(keptSize(size));
    QImage image = reader.read();
    if (image.isNull())
        return Failure{
            Failure::Kind::UnreadableFile,
            QStringLiteral("The picture \"%1\" cannot be shown: %2.").arg(path, reader.errorString())};
    if (isLarge(image.size())) { // Some files tell a size that is not the one they have.
        size = image.size();
        image = image.scaled(keptSize(size));
    } else if (reader.transformation() & QImageIOHandler::TransformationRotate90) {
        size.transpose();
    }
    return LabelPicture{image, size.isEmpty() ? image.size() : size};
}

Outcome<SharedPicture> sharedPicture(const QString& path, QObject* owner, std::chrono::milliseconds patience)
{
    static Shelf shelf;
    const QPointer<QObject> asker(owner);
    std::optional<WaitPointer> wait;
    if (QWidget* window = QApplication::activeWindow())
        wait.emplace(window);
    Worker worker(std::chrono::milliseconds(0)); // A place that hangs is left behind.
    const std::optional<FileState> state = lookAt(worker, path, owner, patience);
    if (!asker)
        return Failure{Failure::Kind::Cancelled};
    if (state && !state->isThere)
        return Failure{Failure::Kind::NotFound};
    const SharedPicture held = path == shelf.path ? shelf.picture.lock() : nullptr;
    if (held && (!state || *state == shelf.state))
        return held;
    return state ? fetch(worker, path, *state, owner, shelf) : Outcome<SharedPicture>(noAnswer(path));
}

} // namespace zib
