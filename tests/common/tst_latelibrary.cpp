#include "common/LateLibrary.h"

#include <QtTest>

#include <dlfcn.h>

namespace {

constexpr const char* kFile = "libsndfile.so.1"; // not linked here

bool isLoaded()
{
    void* handle = ::dlopen(kFile, RTLD_NOW | RTLD_NOLOAD);
    if (handle)
        ::dlclose(handle);
    return handle;
}

} // namespace

class TestLateLibrary : public QObject
{
    Q_OBJECT
private slots:
    void library_isLoaded_atTheFirstCall();
    void missingLibrary_isTold_andItsFunctionsDoNothing();
    void missingFunction_doesNothing();
    void damagedLibrary_isTold();
};

void TestLateLibrary::library_isLoaded_atTheFirstCall()
{
    zib::LateLibrary library(kFile);
    const zib::LateFunction<const char* (*)()> version(library, "sf_version_string");
    QVERIFY(!isLoaded());
    QVERIFY(QByteArray(version()).startsWith("libsndfile"));
    QVERIFY(isLoaded());
    QVERIFY(library.load());
    QCOMPARE(library.trouble(), QString());
}

void TestLateLibrary::missingLibrary_isTold_andItsFunctionsDoNothing()
{
    zib::LateLibrary library("libzib-is-not-here.so.1");
    const zib::LateFunction<int (*)(int)> number(library, "abs");
    const zib::LateFunction<void (*)()> end(library, "abort");
    QVERIFY(!library.load());
    QVERIFY2(library.trouble().contains("libzib-is-not-here.so.1"), qPrintable(library.trouble()));
    QVERIFY(!number.address());
    QCOMPARE(number(-5), 0);
    end();
}

void TestLateLibrary::missingFunction_doesNothing()
{
    zib::LateLibrary library(kFile);
    const zib::LateFunction<int (*)(int)> unknown(library, "zib_has_no_such_function");
    QVERIFY(library.load());
    QCOMPARE(unknown(7), 0);
}

void TestLateLibrary::damagedLibrary_isTold()
{
    const QTemporaryDir folder;
    const QByteArray path = QFile::encodeName(folder.filePath("libdamaged.so.1"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("no library at all");
    file.close();
    zib::LateLibrary library(path.constData());
    QVERIFY(!library.load());
    QVERIFY2(library.trouble().contains("libdamaged.so.1"), qPrintable(library.trouble()));
}

QTEST_GUILESS_MAIN(TestLateLibrary)
#include "tst_latelibrary.moc"
