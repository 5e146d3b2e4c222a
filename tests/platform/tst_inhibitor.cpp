#include "platform/LogindInhibitor.h"

#include <QDBusConnection>
#include <QDBusUnixFileDescriptor>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <array>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

constexpr int kPatienceMs = 30'000;

/// A session manager that grants a lock after a while and notices when it is let go of.
class Manager final : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.login1.Manager")
public:
    ~Manager() override
    {
        for (const int lock : m_locks)
            ::close(lock);
    }
    /// How many of the locks given out are still held.
    int held() const
    {
        int count = 0;
        for (const int lock : m_locks) {
            pollfd state{.fd = lock, .events = 0, .revents = 0};
            count += ::poll(&state, 1, 0) == 0 ? 1 : 0;
        }
        return count;
    }

    QList<QStringList> asked;
    int delayMs = 0;

public slots:
    QDBusUnixFileDescriptor Inhibit(const QString& what, const QString& who, const QString& why,
                                    const QString& mode)
    {
        asked << QStringList{what, who, why, mode};
        QTest::qSleep(delayMs);
        std::array<int, 2> ends{};
        if (::pipe2(ends.data(), O_CLOEXEC) != 0)
            qFatal("no pipe");
        QDBusUnixFileDescriptor given;
        given.giveFileDescriptor(ends[1]);
        m_locks << ends[0];
        return given;
    }

private:
    QList<int> m_locks;
};

/// A bus of our own, of which the session manager is the only one.
class PrivateBus
{
public:
    explicit PrivateBus(const QString& socket)
    {
        m_daemon.start("dbus-daemon", {"--session", "--nofork", "--nopidfile", "--print-address",
                                       "--address=unix:path=" + socket});
        if (!m_daemon.waitForReadyRead(kPatienceMs))
            qFatal("no bus: %s", m_daemon.readAllStandardError().constData());
        QDBusConnection bus = QDBusConnection::connectToBus("unix:path=" + socket, "manager");
        m_serves = bus.registerObject("/org/freedesktop/login1", &manager, QDBusConnection::ExportAllSlots) &&
                   bus.registerService("org.freedesktop.login1");
    }
    ~PrivateBus()
    {
        QDBusConnection::disconnectFromBus("manager");
        m_daemon.kill();
        m_daemon.waitForFinished();
    }
    bool serves() const { return m_serves; }

    Manager manager;

private:
    QProcess m_daemon;
    bool m_serves = false;
};

} // namespace

/// The locks of the session manager, on a real bus of the test's own. The bus library asks for the address
/// once, so all tests use the same one.
class TestInhibitor : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { qputenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=" + QFile::encodeName(socket())); }
    void hold_withoutABus_isHarmless()
    {
        zib::LogindInhibitor inhibitor;
        auto held = inhibitor.hold("A disc is being written");
        QTest::qWait(100);
        held.reset();
    }
    void hold_whenTheBusHangs_returnsAtOnce()
    {
        const int bus = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
        qstrncpy(address.sun_path, QFile::encodeName(socket()).constData(), sizeof address.sun_path);
        QCOMPARE(::bind(bus, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        QCOMPARE(::listen(bus, 5), 0);
        QElapsedTimer taken;
        taken.start();
        {
            zib::LogindInhibitor inhibitor;
            const auto held = inhibitor.hold("A disc is being written");
        }
        qInfo("%lld ms with a bus that hangs (goal 100)", taken.elapsed());
        QVERIFY(taken.elapsed() < 2000);
        ::close(bus);
        QFile::remove(socket());
    }
    void hold_whileItLives_keepsTheLock()
    {
        PrivateBus bus(socket());
        QVERIFY(bus.serves());
        zib::LogindInhibitor inhibitor;
        auto held = inhibitor.hold("A disc is being written");
        QTRY_COMPARE_WITH_TIMEOUT(bus.manager.held(), 1, kPatienceMs);
        QTest::qWait(200);
        QCOMPARE(bus.manager.held(), 1);
        QCOMPARE(bus.manager.asked, QList<QStringList>({{"sleep:shutdown", "Zib CD Burner",
                                                         "A disc is being written", "block"}}));
        held.reset();
        QTRY_COMPARE_WITH_TIMEOUT(bus.manager.held(), 0, kPatienceMs);
    }
    void hold_forTheSameReason_lengthensTheOneLock()
    {
        PrivateBus bus(socket());
        zib::LogindInhibitor inhibitor;
        auto first = inhibitor.hold("A disc is being written");
        auto second = inhibitor.hold("A disc is being written");
        auto other = inhibitor.hold("An MP3 file is being converted");
        QTRY_COMPARE_WITH_TIMEOUT(bus.manager.held(), 2, kPatienceMs);
        first.reset();
        other.reset();
        QTRY_COMPARE_WITH_TIMEOUT(bus.manager.held(), 1, kPatienceMs);
        second.reset();
        QTRY_COMPARE_WITH_TIMEOUT(bus.manager.held(), 0, kPatienceMs);
        const auto again = inhibitor.hold("A disc is being written");
        QTRY_COMPARE_WITH_TIMEOUT(bus.manager.held(), 1, kPatienceMs);
    }
    void hold_endedBeforeItWasGranted_isNotKept()
    {
        PrivateBus bus(socket());
        bus.manager.delayMs = 200;
        zib::LogindInhibitor inhibitor;
        inhibitor.hold("A disc is being written").reset();
        QTRY_COMPARE_WITH_TIMEOUT(bus.manager.asked.size(), 1, kPatienceMs);
        QTRY_COMPARE_WITH_TIMEOUT(bus.manager.held(), 0, kPatienceMs);
    }

private:
    QString socket() const { return m_folder.filePath("bus"); }

    QTemporaryDir m_folder;
};

QTEST_GUILESS_MAIN(TestInhibitor)
#include "tst_inhibitor.moc"
