#pragma once

#include "engines/burn/mmc/WritePage.h"

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

#include <sys/types.h>

namespace burn {
struct burn_source;
}

namespace zib {

/// Stands between the library and the first block it writes: nothing passes before the drive itself has said
/// that it is going to write as planned.
///
/// The library sends the plan again on its own, once for a session and once for each track written by itself,
/// and does not say when a drive refuses it. But before it lays out the disc, and before the first block of a
/// track, it asks a track's source, on its own thread. There the drive is asked; when the answer is wrong the
/// library's way to the drive is cut, for a cancelled track would still be padded on the disc.
class ModeGate
{
public:
    /// @param line a way beside the library.  @param cut ends all commands of the library.
    ModeGate(std::shared_ptr<DriveLine> line, const WritePlan& plan, std::function<void()> cut);
    Q_DISABLE_COPY_MOVE(ModeGate)

    /// Called on the thread that starts the library; questions of that thread are answered without a proof.
    void arm();
    /// A source that gives what @p inner gives, behind this gate, which outlives it. Takes its own reference
    /// to
    /// @p inner; the caller owns the reference to the result.
    burn::burn_source* guard(burn::burn_source* inner);
    /// Of how many tracks the library has asked for sound. Any thread.
    int tracksBegun() const { return m_tracksBegun; }
    /// Why the gate was shut, if it was. Any thread.
    std::optional<PlanFault> fault() const;

private:
    struct Guarded;
    static int read(burn::burn_source* source, unsigned char* buffer, int size);
    static int cancel(burn::burn_source* source);
    static off_t size(burn::burn_source* source);
    static int setSize(burn::burn_source* source, off_t size);
    static void freeData(burn::burn_source* source);

    bool mayBegin();
    bool pass();

    const std::shared_ptr<DriveLine> m_line;
    const WritePlan m_plan;
    const std::function<void()> m_cut;
    std::thread::id m_starter;
    std::atomic<bool> m_armed = false;
    std::atomic<int> m_tracksBegun = 0;
    bool m_begun = false; ///< The library has begun to read a track; its thread only.
    mutable std::mutex m_mutex;
    std::optional<PlanFault> m_fault;
};

} // namespace zib
