#include "platform/IniFile.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

/// The INI service on real files.
class TestIniFile : public QObject
{
    Q_OBJECT
private slots:
    void write_thenRead_givesTheValueAndKeepsTheRest();
};

void TestIniFile::write_thenRead_givesTheValueAndKeepsTheRest()
{
    QTemporaryDir folder;
    const QString path = folder.filePath("a.ini");
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("; mine\r\n[A]\r\nx = 1\r\n\r\n[B]\r\ny=2\r\n");
    file.close();
    zib::IniFile ini;
    QVERIFY(ini.WritePrivateProfileStringA("a", QByteArray("X"), QByteArray("2"), path));
    QVERIFY(ini.WritePrivateProfileStringA("a", QByteArray("z"), QByteArray("3"), path));
    QCOMPARE(ini.GetPrivateProfileStringA("A", "x", "", 100, path), QByteArray("2"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("; mine\r\n[A]\r\nx = 2\r\nz=3\r\n\r\n[B]\r\ny=2\r\n"));
}

QTEST_APPLESS_MAIN(TestIniFile)
#include "tst_inifile.moc"
