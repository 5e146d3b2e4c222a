#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <cstdint>
#include <optional>

namespace zib {

/// A machine with one emulated recorder, for a test: writes the configuration that the preload library reads.
///
/// Set up and change it from the test's thread; each change is in force for the next command of whoever uses
/// the drive. The library must be preloaded into the process that opens the drive: zib_drive_test() does that
/// for the test itself, and environment() for a child. The object owns a temporary folder with everything in
/// it.
class EmulatedRecorder
{
public:
    /// One track of the disc in the drive. Addresses in frames; the control bits are those of the Q
    /// sub-channel.
    struct Track
    {
        int number = 0;
        int session = 0;
        int control = 0;
        std::int32_t pregap = 0;
        std::int32_t start = 0;
        std::int32_t end = 0;
        QByteArray isrc;
    };

    /// What has become of the disc in the drive, whoever wrote and however it ended.
    enum class DiscEnd
    {
        None,    ///< there is no disc
        Blank,   ///< not a frame was written
        Begun,   ///< something was written and the disc not closed
        Finished ///< closed: nothing can be added
    };

    /// What the disc in the drive holds.
    struct Content
    {
        bool blank = true;
        bool finalized = false;
        std::int32_t leadOut = 0; ///< of the last complete session; 0 when there is none
        QList<Track> tracks;
        QByteArray catalogNumber;
        QByteArray cdTextPacks;
    };

    /// A drive "sr0" with a blank 80-minute CD-R named "disc1" in it.
    /// Points the environment variable of this process at its configuration.
    EmulatedRecorder();

    /// The device node.
    [[nodiscard]] static QString device() { return QStringLiteral("/dev/sr0"); }
    /// Whether the preload library stands in front of this process.
    [[nodiscard]] bool isPreloaded() const;
    /// NAME=value lines for a child process: the preload library and the configuration.
    [[nodiscard]] QStringList environment(const QString& library) const;
    /// The folder everything lies in.
    [[nodiscard]] QString folder() const { return m_folder.path(); }

    /// Sets a key of the drive's section; README.md lists them.
    void set(const QString& key, const QString& value);
    /// Puts the disc @p name in; a disc not seen before is made by disc-kind, disc-minutes and @p recipe (its
    /// lines).
    void insert(const QString& name, const QStringList& recipe = {});
    /// Takes the disc out.
    void removeDisc();
    /// Adds a fault rule.
    void addFault(const QString& rule);
    /// Drops all fault rules: an unplugged drive is back, a disc that was pulled is in again.
    void clearFaults();

    /// Whether any of the fault rules has struck; also while the command it holds up still hangs.
    [[nodiscard]] bool faultStruck() const;

    /// All lines of the journal.
    [[nodiscard]] QStringList journal() const;
    void clearJournal();
    /// How many commands named @p command the journal has, with answer @p answer unless that is empty.
    [[nodiscard]] int count(const QString& command, const QString& answer = {}) const;
    /// Whether the door is locked now: the drive's own state, which outlives the programs that used it.
    [[nodiscard]] bool doorLocked() const;

    /// What the disc is, out of the drive's own files and not by its commands, so that no fault touches the
    /// answer; also after the program that wrote was killed.
    [[nodiscard]] DiscEnd discEnd() const;

    /// What the disc in the drive holds; nothing when there is no disc.
    [[nodiscard]] std::optional<Content> content() const;
    /// @p count frames of 2352 bytes from address @p lba on, as they lie on the disc.
    [[nodiscard]] QByteArray frames(std::int32_t lba, std::int32_t count) const;

private:
    void write();

    QTemporaryDir m_folder;
    QStringList m_keys;
    QStringList m_values;
    QStringList m_faults;
    QString m_disc;
    bool m_preloaded = false;
};

} // namespace zib
