// Runs a fuzz target without libFuzzer: every seed as it is, then mutations of the seeds from a fixed random
// sequence, so that every run does the same.
//   fuzz_x [-runs=N] [-seed=N] [files or folders]
// A run that fails leaves its input in the file crash-input of the working folder.

#include <QByteArray>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QStringList>

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

constexpr int kMostChanges = 8;
constexpr int kMostRandomBytes = 64;

QByteArray g_input;

extern "C" void keepInput(int)
{
    std::FILE* file = std::fopen("crash-input", "wb");
    if (file) {
        std::fwrite(g_input.constData(), 1, static_cast<std::size_t>(g_input.size()), file);
        std::fclose(file);
    }
    std::signal(SIGABRT, SIG_DFL);
    std::signal(SIGSEGV, SIG_DFL);
    std::abort();
}

void run(const QByteArray& input)
{
    g_input = input;
    // A copy of its exact size, so that a reader beyond the end is seen by a memory checker.
    QList<std::uint8_t> exact(input.begin(), input.end());
    LLVMFuzzerTestOneInput(exact.constData(), static_cast<std::size_t>(exact.size()));
}

QByteArrayList seedsOf(const QStringList& paths)
{
    QByteArrayList seeds{QByteArray()};
    const auto add = [&seeds](const QString& path) {
        QFile file(path);
        if (file.open(QIODevice::ReadOnly))
            seeds << file.readAll();
    };
    for (const QString& path : paths) {
        if (!QFileInfo(path).isDir()) {
            add(path);
            continue;
        }
        QStringList files;
        for (QDirIterator i(path, QDir::Files, QDirIterator::Subdirectories); i.hasNext();)
            files << i.next();
        files.sort();
        for (const QString& file : files)
            add(file);
    }
    return seeds;
}

void change(QByteArray& input, const QByteArrayList& seeds, QRandomGenerator& random)
{
    const auto place = [&] {
        return static_cast<qsizetype>(random.bounded(static_cast<quint64>(input.size()) + 1));
    };
    const qsizetype at = place();
    const qsizetype length = random.bounded(kMostRandomBytes);
    switch (random.bounded(6)) {
    case 0: // A byte becomes another one.
        if (at < input.size())
            input[at] = static_cast<char>(random.bounded(256));
        break;
    case 1: // A bit turns.
        if (at < input.size())
            input[at] = static_cast<char>(input[at] ^ (1 << random.bounded(8)));
        break;
    case 2:
        input.remove(at, length);
        break;
    case 3:
        for (qsizetype i = 0; i < length; ++i)
            input.insert(at, static_cast<char>(random.bounded(256)));
        break;
    case 4: // A piece comes twice.
        input.insert(place(), QByteArray(input.mid(at, length)));
        break;
    default: // A piece of another seed.
        const QByteArray& other = seeds[random.bounded(static_cast<int>(seeds.size()))];
        input.insert(at,
                     other.mid(other.isEmpty() ? 0 : random.bounded(static_cast<int>(other.size())), length));
    }
}

} // namespace

int main(int argc, char* argv[])
{
    int runs = 0;
    quint32 seed = 1;
    QStringList paths;
    for (int i = 1; i < argc; ++i) {
        const QString word = QString::fromLocal8Bit(argv[i]);
        if (word.startsWith(QStringLiteral("-runs=")))
            runs = word.mid(6).toInt();
        else if (word.startsWith(QStringLiteral("-seed=")))
            seed = word.mid(6).toUInt();
        else
            paths << word;
    }
    std::signal(SIGABRT, keepInput);
    std::signal(SIGSEGV, keepInput);
    const QByteArrayList seeds = seedsOf(paths);
    for (const QByteArray& input : seeds)
        run(input);
    QRandomGenerator random(seed);
    for (int i = 0; i < runs; ++i) {
        QByteArray input = seeds[random.bounded(static_cast<int>(seeds.size()))];
        for (int changes = random.bounded(kMostChanges) + 1; changes > 0; --changes)
            change(input, seeds, random);
        run(input);
    }
    std::printf("%lld seeds and %d mutations passed.\n", static_cast<long long>(seeds.size()), runs);
    return 0;
}
