#include "platform/SessionBus.h"

#include <QElapsedTimer>
#include <QFile>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTest>

#include <array>
#include <cstddef>
#include <cstring>
#include <thread>
#include <vector>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {

constexpr const char* kAddress = "DBUS_SESSION_BUS_ADDRESS";
constexpr const char* kNowhere = "unix:path=/dev/null";

/// How a bus treats those who connect.
enum class Manner
{
    Refuses, ///< Is ready to answer and says that no way was named, as buses do.
    HangsUp,
    Mute,
    Full ///< Takes nobody in any more.
};

/// A bus at a path, or at an abstract name that begins with a NUL.
class SmallBus
{
public:
    SmallBus(const QByteArray& name, Manner manner) : m_manner(manner)
    {
        sockaddr_un place{};
        place.sun_family = AF_UNIX;
        std::memcpy(place.sun_path, name.constData(), static_cast<size_t>(name.size()));
        if (name[0] == '/')
            ::unlink(name.constData());
        m_door = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());
        m_isOpen = ::bind(m_door, reinterpret_cast<const sockaddr*>(&place), size) == 0 &&
                   ::listen(m_door, manner == Manner::Full ? 0 : 8) == 0 && ::pipe(m_end.data()) == 0;
        if (manner == Manner::Full)
            fill(place, size);
        else
            m_thread = std::thread([this] { serve(); });
    }
    ~SmallBus()
    {
        if (m_thread.joinable()) {
            [[maybe_unused]] const auto told = ::write(m_end[1], "x", 1);
            m_thread.join();
        }
        for (const int guest : m_guests)
            ::close(guest);
        for (const int fd : {m_door, m_end[0], m_end[1]})
            ::close(fd);
    }
    bool isOpen() const { return m_isOpen; }
    /// A full bus takes in whoever stands before its door, and answers.
    void serveAfterAll()
    {
        m_manner = Manner::Refuses;
        m_thread = std::thread([this] { serve(); });
    }
    QByteArray heard() const { return m_heard; }

private:
    void fill(const sockaddr_un& place, socklen_t size)
    {
        for (int i = 0; i < 4; ++i) {
            const int guest = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
            [[maybe_unused]] const int in = ::connect(guest, reinterpret_cast<const sockaddr*>(&place), size);
            [[maybe_unused]] const auto asked = ::send(guest, "?", 1, MSG_NOSIGNAL);
            m_guests.push_back(guest);
        }
    }
    void serve()
    {
        for (;;) {
            std::array<pollfd, 2> lines{pollfd{m_door, POLLIN, 0}, pollfd{m_end[0], POLLIN, 0}};
            ::poll(lines.data(), lines.size(), -1);
            if (lines[1].revents != 0)
                return;
            const int guest = ::accept(m_door, nullptr, nullptr);
            if (m_manner == Manner::HangsUp)
                ::close(guest);
            else
                m_guests.push_back(guest);
            if (m_manner == Manner::Refuses)
                answer(guest);
        }
    }
    void answer(int guest)
    {
        std::array<char, 64> said{};
        const auto count = ::read(guest, said.data(), said.size());
        m_heard = QByteArray(said.data(), static_cast<qsizetype>(std::max<ssize_t>(count, 0)));
        const QByteArray ways = "REJECTED EXTERNAL\r\n";
        [[maybe_unused]] const auto sent = ::write(guest, ways.constData(), static_cast<size_t>(ways.size()));
    }

    Manner m_manner;
    int m_door = -1;
    bool m_isOpen = false;
    std::array<int, 2> m_end{-1, -1};
    std::vector<int> m_guests;
    QByteArray m_heard;
    std::thread m_thread;
};

} // namespace

/// Which message buses the program talks to.
class TestSessionBus : public QObject
{
    Q_OBJECT
private slots:
    void bus_ofAnyManner_isLeftOnlyWhenMute_data()
    {
        QTest::addColumn<int>("manner");
        QTest::addColumn<bool>("isLeft");
        QTest::newRow("answers") << int(Manner::Refuses) << false;
        QTest::newRow("hangs up") << int(Manner::HangsUp) << false;
        QTest::newRow("mute") << int(Manner::Mute) << true;
        QTest::newRow("full") << int(Manner::Full) << true;
    }
    void bus_ofAnyManner_isLeftOnlyWhenMute()
    {
        QFETCH(int, manner);
        QFETCH(bool, isLeft);
        const SmallBus bus(path("bus"), Manner(manner));
        QVERIFY(bus.isOpen());
        const QByteArray address = "unix:path=" + path("bus") + ",guid=00ff";
        qputenv(kAddress, address);
        QElapsedTimer taken;
        taken.start();
        zib::leaveMuteSessionBus(isLeft ? 300ms : 10s);
        QVERIFY2(taken.elapsed() < 5000, qPrintable(QString::number(taken.elapsed())));
        QCOMPARE(qgetenv(kAddress), isLeft ? QByteArray(kNowhere) : address);
    }

    void bus_thatHasRoomAfterAWhile_isKept()
    {
        SmallBus bus(path("bus"), Manner::Full);
        QVERIFY(bus.isOpen());
        const QByteArray address = "unix:path=" + path("bus");
        qputenv(kAddress, address);
        std::thread later([&bus] {
            std::this_thread::sleep_for(300ms);
            bus.serveAfterAll();
        });
        zib::leaveMuteSessionBus(20s);
        later.join();
        QCOMPARE(qgetenv(kAddress), address);
    }

    void bus_thatAnswers_wasAskedAsTheProtocolHasIt()
    {
        SmallBus bus(path("bus"), Manner::Refuses);
        qputenv(kAddress, "unix:path=" + path("bus"));
        zib::leaveMuteSessionBus(10s);
        QCOMPARE(bus.heard(), QByteArray("\0AUTH\r\n", 7));
    }

    void bus_ofAnyAddress_isFound_data()
    {
        QTest::addColumn<QByteArray>("address");
        const QByteArray mute = path("mute");
        const QByteArray hidden = "zib-test-" + QByteArray::number(::getpid());
        QTest::newRow("after one that is missing") << "unix:path=" + path("none") + ";unix:path=" + mute;
        QTest::newRow("after another fact") << "unix:guid=00ff,path=" + mute;
        QTest::newRow("with escapes") << "unix:path=" + QByteArray(mute).replace("mute", "%6dute");
        QTest::newRow("abstract") << "unix:abstract=" + hidden;
        QTest::newRow("of the session's folder") << QByteArray();
    }
    void bus_ofAnyAddress_isFound()
    {
        QFETCH(QByteArray, address);
        const SmallBus bus(path("mute"), Manner::Mute);
        const SmallBus hidden('\0' + QByteArray("zib-test-") + QByteArray::number(::getpid()), Manner::Mute);
        const SmallBus standing(path("bus"), Manner::Mute);
        QVERIFY(bus.isOpen() && hidden.isOpen() && standing.isOpen());
        qputenv("XDG_RUNTIME_DIR", m_folder.path().toUtf8());
        if (address.isEmpty())
            qunsetenv(kAddress);
        else
            qputenv(kAddress, address);
        zib::leaveMuteSessionBus(100ms);
        QCOMPARE(qgetenv(kAddress), QByteArray(kNowhere));
    }

    /// The bus library copies the whole process to look for the program that starts one.
    void bus_thatIsNowhere_isLeftUnlessItCanBeStarted_data()
    {
        QTest::addColumn<QByteArray>("address");
        QTest::addColumn<bool>("canBeStarted");
        QTest::addColumn<QByteArray>("then");
        QTest::newRow("no program starts one") << QByteArray() << false << QByteArray(kNowhere);
        QTest::newRow("a program starts one") << QByteArray() << true << QByteArray();
        QTest::newRow("a place was told")
            << QByteArray("unix:path=/gone") << false << QByteArray("unix:path=/gone");
    }
    void bus_thatIsNowhere_isLeftUnlessItCanBeStarted()
    {
        QFETCH(QByteArray, address);
        QFETCH(bool, canBeStarted);
        QTemporaryDir empty;
        const auto paths = qScopeGuard([path = qgetenv("PATH")] { qputenv("PATH", path); });
        qputenv("PATH", empty.path().toUtf8());
        qputenv("XDG_RUNTIME_DIR", empty.path().toUtf8());
        if (canBeStarted)
            QVERIFY(QFile::copy(QStringLiteral("/bin/true"), empty.filePath(QStringLiteral("dbus-launch"))));
        if (address.isEmpty())
            qunsetenv(kAddress);
        else
            qputenv(kAddress, address);
        zib::leaveMuteSessionBus(100ms);
        QTEST(qgetenv(kAddress), "then");
    }

    void address_thatIsNoneOfASocket_isLeftAlone_data()
    {
        QTest::addColumn<QByteArray>("address");
        for (const char* address :
             {"tcp:host=localhost,port=1", "autolaunch:", "unix:path=", "unix:path=/nowhere/at/all",
              "unix:tmpdir=/tmp", "nonsense", "unix:path=/dev/null", ";;"})
            QTest::newRow(address) << QByteArray(address);
        QTest::newRow("endless") << "unix:path=/" + QByteArray(500, 'x');
        QTest::newRow("before a mute one") << "tcp:host=localhost;unix:path=" + path("mute");
    }
    void address_thatIsNoneOfASocket_isLeftAlone()
    {
        QFETCH(QByteArray, address);
        const SmallBus bus(path("mute"), Manner::Mute);
        qputenv(kAddress, address);
        zib::leaveMuteSessionBus(100ms);
        QCOMPARE(qgetenv(kAddress), address);
    }

private:
    QByteArray path(const char* name) const { return m_folder.filePath(name).toUtf8(); }

    QTemporaryDir m_folder;
};

QTEST_GUILESS_MAIN(TestSessionBus)
#include "tst_sessionbus.moc"
