#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

/// A print system of the test's own: a private CUPS server on a socket in a temporary folder, which this
/// process and everything it starts talks to. Its queues print into files.
class PrintSystem
{
public:
    /// @param extra lines for cupsd.conf.
    explicit PrintSystem(const QString& extra = {});
    ~PrintSystem();

    /// @returns why the server does not run, or nothing when it does.
    QString problem() const { return m_problem; }
    /// Makes a queue that stores what it is sent, unchanged, in the file it returns.
    QString addFileQueue(const QString& name, const QStringList& options = {});
    /// How a printer misses: from the paper's upper left corner everything is scaled, then shifted.
    struct Miss
    {
        double acrossMm = 0;
        double downMm = 0;
        double scaleAcross = 1;
        double scaleDown = 1;
    };
    /// Makes a queue like addFileQueue's, but of a printer that misses by so much on paper of that height.
    QString addCrookedQueue(const QString& name, const Miss& miss, double paperHeightMm);
    /// Makes a queue of Debian's PDF printer.
    bool addPdfQueue(const QString& name);
    /// Runs a CUPS command against the server. @returns whether it succeeded.
    bool run(const QString& command, const QStringList& arguments);
    void setDefault(const QString& name) { run("lpadmin", {"-d", name}); }
    /// Waits until no queue works on a job. @returns whether that came.
    bool waitForJobs();
    /// Lets this process and what it starts talk to another server.
    static void useServer(const QString& socket);
    /// @returns the output of a CUPS command.
    QString ask(const QString& command, const QStringList& arguments);

private:
    void makeServerPrograms() const;
    void addDriver(const QString& name, const QString& script) const;
    bool writeFile(const QString& name, const QString& text) const;
    QString configuration(const QString& extra) const;
    QString start(const QString& extra);

    QTemporaryDir m_folder;
    QProcess m_server;
    QString m_problem;
};
