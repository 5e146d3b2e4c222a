#include "Drive.h"

#include "Commands.h"
#include "Journal.h"
#include "Operations.h"
#include "Recipe.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <functional>
#include <time.h>
#include <utility>

namespace zib::drive {
namespace {

constexpr std::uint32_t kStateVersion = 1;
constexpr std::uint32_t kLongestHangMs = 60000;
constexpr std::int64_t kSliceMs = 20;
constexpr std::size_t kErrorPointerBytes = kFrameBytes / 8;

void initialiseMutex(pthread_mutex_t& mutex)
{
    pthread_mutexattr_t attributes;
    ::pthread_mutexattr_init(&attributes);
    ::pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
    ::pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
    ::pthread_mutex_init(&mutex, &attributes);
    ::pthread_mutexattr_destroy(&attributes);
}

void initialiseModes(DriveState& state, const DriveConfig& config)
{
    state.errorRecovery = {0x01, kErrorRecoveryBytes - 2, 0, 16};
    state.writeParameters = {};
    state.writeParameters[0] = 0x05;
    state.writeParameters[1] = kWriteParameterBytes - 2;
    state.writeParameters[2] = config.tao ? kTrackAtOnce : kSessionAtOnce;
    state.writeParameters[15] = kPregapFrames;
    state.readSpeed = kilobytesPerSecond(config.readSpeed);
    state.writeSpeed = config.writeSpeeds.empty() ? 0 : kilobytesPerSecond(config.writeSpeeds.front());
}

void initialiseState(DriveState& state, const DriveConfig& config)
{
    state.version = kStateVersion;
    initialiseMutex(state.mutex);
    initialiseModes(state, config);
}

// A drive that was unplugged comes back as if just switched on.
void losePower(DriveState& state, const DriveConfig& config)
{
    state.doorLocked = false;
    state.sessionRunning = false;
    state.simulatedTracks = 0;
    state.simulatedOpen = false;
    state.busyUntilMs = 0;
    initialiseModes(state, config);
}

// What a rule makes of the drive itself, beside its answer.
void strike(DriveState& state, const DriveConfig& config, const FaultRule& rule)
{
    if (rule.kind == FaultKind::Gone || rule.kind == FaultKind::Reset) {
        losePower(state, config);
    }
    state.wasReset = state.wasReset || (rule.kind == FaultKind::Reset && rule.after);
}

void sleepMs(std::int64_t milliseconds)
{
    timespec time{static_cast<time_t>(milliseconds / 1000), static_cast<long>(milliseconds % 1000 * 1000000)};
    while (::nanosleep(&time, &time) != 0 && errno == EINTR) {
    }
}

std::string hexadecimal(ByteView bytes)
{
    std::string text;
    for (const std::uint8_t byte : bytes) {
        std::array<char, 4> digits{};
        std::snprintf(digits.data(), digits.size(), "%02X", byte);
        text += digits.data();
    }
    return text;
}

std::string describe(const Answer& answer)
{
    if (answer.error != 0) {
        return answer.error == ENODEV ? "ENODEV" : "errno" + std::to_string(answer.error);
    }
    if (answer.hostStatus != 0) {
        return answer.hostStatus == kHostError     ? "transport"
               : answer.hostStatus == kHostTimeOut ? "timeout"
                                                   : "host" + std::to_string(answer.hostStatus);
    }
    if (answer.status != 0) {
        return "status" + std::to_string(answer.status);
    }
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "%X/%02X/%02X", answer.sense.key, answer.sense.asc,
                  answer.sense.ascq);
    return answer.sense.good() ? "good" : text.data();
}

std::size_t commandLength(std::uint8_t operation)
{
    return operation < 0x20 ? 6 : operation < 0x80 ? 10 : 12;
}

// Commands whose parameter list says what is going to happen; the journal keeps it.
bool tellsByData(int operation)
{
    return operation == 0x15 || operation == 0x55 || operation == 0x5D || operation == 0xB6;
}

void changeBytes(Bytes& reply, const std::vector<FaultRule>& rules)
{
    for (const FaultRule& rule : rules) {
        if (rule.kind == FaultKind::Flip && rule.replyAt < reply.size()) {
            reply[rule.replyAt] ^= rule.flipMask;
        }
        for (std::size_t i = 0; i < rule.patch.size() && rule.replyAt + i < reply.size(); ++i) {
            reply[rule.replyAt + i] = rule.patch[i];
        }
        if (rule.kind == FaultKind::Short && rule.replyAt < reply.size()) {
            reply.resize(rule.replyAt);
        }
    }
}

const Track* trackOf(const DiscState& disc, int number)
{
    const auto end = disc.tracks.begin() + disc.trackCount;
    const auto track =
        std::find_if(disc.tracks.begin(), end, [number](const Track& one) { return one.number == number; });
    return track == end ? nullptr : &*track;
}

// The frame that is read for the one that was asked for.
std::int32_t placeOf(const FaultRule& rule, std::int32_t lba, const DiscState& disc)
{
    if (rule.kind == FaultKind::Missing) {
        return lba < rule.missingLba ? lba : lba + 1;
    }
    const Track* one = trackOf(disc, rule.swapped[0]);
    const Track* other = trackOf(disc, rule.swapped[1]);
    if (rule.kind != FaultKind::Swapped || one == nullptr || other == nullptr) {
        return lba;
    }
    if (lba >= other->start && lba < other->end) {
        std::swap(one, other);
    }
    return lba >= one->start && lba < one->end ? lba - one->start + other->start : lba;
}

// Changes a handful of samples, and other ones each time, so that only an undisturbed read can be confirmed.
// Where the frame carries error pointers, one bit for each byte, they tell of it.
void addNoise(std::span<std::uint8_t> frame, std::uint32_t strike)
{
    const std::size_t samples = std::min(frame.size(), kFrameBytes);
    const bool pointers = frame.size() >= kFrameBytes + kErrorPointerBytes;
    for (std::size_t i = 0; i < 16; ++i) {
        const std::size_t at = (i * 131 + strike * 17) % samples;
        frame[at] ^= static_cast<std::uint8_t>((0x5A + strike + i) | 1U);
        if (pointers) {
            frame[kFrameBytes + at / 8] |= static_cast<std::uint8_t>(0x80U >> at % 8);
        }
    }
}

} // namespace

/// Holds the drive for one command, across threads and processes. A process that died inside leaves it
/// usable.
class Drive::Lock
{
public:
    explicit Lock(SharedFile<DriveState>& state) : m_state(state)
    {
        if (::pthread_mutex_lock(&m_state->mutex) == EOWNERDEAD) {
            ::pthread_mutex_consistent(&m_state->mutex);
        }
    }
    ~Lock() { ::pthread_mutex_unlock(&m_state->mutex); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

private:
    SharedFile<DriveState>& m_state;
};

Drive::Drive(DriveConfig config)
    : m_latest(std::make_shared<const DriveConfig>(std::move(config))), m_config(m_latest)
{
    const bool mapped = m_state.map(m_config->folder + "/" + m_config->name + ".drive",
                                    [&](DriveState& fresh) { initialiseState(fresh, *m_config); });
    if (!mapped) {
        std::fprintf(stderr, "emulated drive: no room for its state in %s\n", m_config->folder.c_str());
        DriveConfig missing = *m_config;
        missing.access = NodeAccess::Missing;
        m_latest = std::make_shared<const DriveConfig>(missing);
    }
}

void Drive::configure(const DriveConfig& config)
{
    if (m_state.mapped()) {
        const std::lock_guard lock{m_latestMutex};
        m_latest = std::make_shared<const DriveConfig>(config);
    }
}

std::shared_ptr<const DriveConfig> Drive::config() const
{
    const std::lock_guard lock{m_latestMutex};
    return m_latest;
}

void Drive::takeConfig()
{
    const auto latest = config();
    if (latest != m_config) {
        m_config = latest;
        dropCounters(m_config->faults, m_state->faultCounters.data(), kMaxFaults);
    }
}

bool Drive::struck(FaultKind kind) const
{
    return m_state.mapped() && hasStruck(config()->faults, kind, m_state->faultCounters.data(), kMaxFaults);
}

bool Drive::gone() const
{
    return struck(FaultKind::Gone);
}

bool Drive::loaded() const
{
    return m_state.mapped() && !config()->disc.empty() && !m_state->trayOpen && !struck(FaultKind::Pull);
}

bool Drive::takeMediaChanged()
{
    const Lock lock{m_state};
    return std::exchange(m_state->mediaChanged, false);
}

// Opening does not wait for a running command, so the number is drawn without the lock.
std::uint64_t Drive::nextNumber()
{
    return std::atomic_ref{m_state->sequence}.fetch_add(1) + 1;
}

void Drive::noteOpening(const std::string& how, const std::string& answer)
{
    const auto now = config();
    appendToJournal(now->journal, std::to_string(nextNumber()) + " " + now->name + " OPEN how=" + how +
                                      " answer=" + answer +
                                      " door=" + (m_state->doorLocked ? "locked" : "unlocked"));
}

void Drive::swapDisc(std::uint64_t identity)
{
    const bool first = !std::exchange(m_state->started, true); // what lies in the drive at first is no change
    m_state->disc = identity;
    m_state->sessionRunning = false;
    m_state->simulatedTracks = 0;
    m_state->simulatedOpen = false;
    m_state->mediaChanged = !first;
    m_state->attention = identity != 0 && !first;
    m_state->mediaEvent = first ? 0 : identity != 0 ? 2 : 3;
}

void Drive::refreshDisc()
{
    const bool pulled = struck(FaultKind::Pull);
    const std::string stem = pulled ? std::string{} : m_config->disc;
    if (stem != m_discStem) {
        m_disc = stem.empty() ? nullptr : std::make_unique<Disc>();
        m_discStem = stem;
        if (m_disc != nullptr && !openWithRecipe(*m_disc, *m_config)) {
            std::fprintf(stderr, "emulated drive: cannot make the disc %s\n", stem.c_str());
            m_disc.reset();
        }
    }
    const std::uint64_t identity = stem.empty() ? 0 : std::hash<std::string>{}(stem) | 1U;
    if (identity != m_state->disc || !m_state->started) {
        m_state->trayOpen = false;
        swapDisc(identity);
    }
}

void Drive::refreshCue()
{
    if (m_cueSerial == m_state->cueSerial || m_disc == nullptr || !m_state->sessionRunning) {
        return;
    }
    m_cue = {};
    m_cueSerial = m_state->cueSerial;
    [[maybe_unused]] const Sense sense =
        readCueSheet({m_state->cue.data(), m_state->cueBytes}, *m_disc, m_cue);
}

Sense Drive::readiness(int operation)
{
    if (!needsMedia(operation)) {
        return kGood;
    }
    if (m_state->trayOpen) {
        return kNoMediumTrayOpen;
    }
    if (m_disc == nullptr) {
        return kNoMedium;
    }
    return monotonicMs() < m_state->busyUntilMs ? kLongWriteInProgress : kGood;
}

Answer Drive::commanded(const Request& request)
{
    const int operation = request.cdb[0];
    if (needsMedia(operation) && std::exchange(m_state->wasReset, false)) {
        return kReset;
    }
    const bool reportsAttention = needsMedia(operation) && m_state->attention;
    if (reportsAttention) {
        m_state->attention = false;
        return kMediumChanged;
    }
    const Command command = commandFor(operation);
    if (command == nullptr) {
        return kUnknownCommand;
    }
    if (controlByteOf(request.cdb) != 0) {
        return kInvalidField; // linked commands are not offered
    }
    const Sense ready = readiness(operation);
    if (!ready.good()) {
        return ready;
    }
    Station station{*m_config, *m_state, m_state->trayOpen ? nullptr : m_disc.get(), m_cue};
    Answer answer = command(station, request);
    m_cueSerial = m_state->cueSerial;
    return answer;
}

void Drive::applyReadFaults(Answer& answer, const Request& request, const FaultVerdict& verdict) const
{
    const CommandRange range = rangeOf(request.cdb);
    if (!range.known || range.count <= 0 || answer.data.empty()) {
        return;
    }
    const std::size_t stride = answer.data.size() / static_cast<std::size_t>(range.count);
    for (std::size_t i = 0; i < verdict.readFaults.size(); ++i) {
        const FaultRule& rule = verdict.readFaults[i];
        const bool ofSamples = rule.kind == FaultKind::Noise || rule.kind == FaultKind::Jitter ||
                               rule.kind == FaultKind::Missing || rule.kind == FaultKind::Swapped;
        for (std::int32_t frame = 0; frame < range.count && ofSamples; ++frame) {
            const std::int32_t lba = range.first + frame;
            const bool struck = !rule.ranged || (lba >= rule.firstLba && lba <= rule.lastLba);
            const std::span bytes{answer.data.data() + static_cast<std::size_t>(frame) * stride, stride};
            if (struck && rule.kind == FaultKind::Noise) {
                addNoise(bytes, verdict.readStrikes[i]);
            } else if (struck && stride >= kFrameBytes) {
                std::ranges::copy(m_disc->readBytes(placeOf(rule, lba, m_disc->state()),
                                                    rule.shiftSamples * 4LL, kFrameBytes),
                                  bytes.begin());
            }
        }
    }
}

Answer Drive::answerTo(const Request& request, const FaultVerdict& verdict)
{
    Answer answer;
    const auto& failure = verdict.failure;
    if (!failure || failure->after) {
        answer = commanded(request);
        applyReadFaults(answer, request, verdict);
        changeBytes(answer.data, verdict.readFaults);
    }
    if (!failure) {
        return answer;
    }
    strike(*m_state, *m_config, *failure);
    if (failure->kind == FaultKind::Reset && failure->after) {
        return answer; // The drive tells of it later.
    }
    answer.data.clear();
    answer.sense = failure->kind == FaultKind::Pull    ? kNoMedium
                   : failure->kind == FaultKind::Reset ? kReset
                                                       : failure->sense;
    answer.deferred = failure->deferred;
    answer.status = failure->status;
    answer.hostStatus = failure->hostStatus;
    answer.error = failure->kind == FaultKind::Gone ? ENODEV : failure->error;
    const CommandRange range = rangeOf(request.cdb);
    if (failure->ranged && range.known) {
        answer.address = std::max(range.first, failure->firstLba);
    }
    return answer;
}

// A changed configuration without any delay sets a hanging command free.
bool Drive::released(std::uint32_t delayMs) const
{
    const auto latest = config();
    return delayMs > 0 && latest != m_config &&
           std::ranges::none_of(latest->faults,
                                [](const FaultRule& rule) { return rule.kind == FaultKind::Delay; });
}

void Drive::wait(Answer& answer, const Request& request, std::uint32_t delayMs) const
{
    const std::int64_t limit = request.timeoutMs == 0 ? kLongestHangMs : request.timeoutMs;
    const std::int64_t needed = answer.takesMs + delayMs;
    if (needed <= 0) {
        return;
    }
    std::int64_t slept = 0;
    while (slept < std::min(needed, limit) && !released(delayMs)) {
        const std::int64_t slice = std::min({needed - slept, limit - slept, kSliceMs});
        sleepMs(slice);
        slept += slice;
    }
    if (needed > limit && slept >= limit) {
        answer.hostStatus = kHostTimeOut;
    }
}

void Drive::note(std::uint64_t number, const Request& request, const Answer& answer,
                 const FaultVerdict& verdict)
{
    const CommandRange range = rangeOf(request.cdb);
    std::string line =
        std::to_string(number) + " " + m_config->name + " " + operationName(request.cdb[0]) +
        " cdb=" + hexadecimal(request.cdb.first(std::min(commandLength(request.cdb[0]), request.cdb.size())));
    if (range.known) {
        line += " lba=" + std::to_string(range.first) + " count=" + std::to_string(range.count);
    }
    if (tellsByData(request.cdb[0])) {
        line += " data=" + hexadecimal(request.dataOut);
    }
    line += " answer=" + describe(answer) + " door=" + (m_state->doorLocked ? "locked" : "unlocked");
    if (verdict.failure || verdict.delayMs > 0 || !verdict.readFaults.empty()) {
        line += " fault=yes";
    }
    appendToJournal(m_config->journal, line);
}

Answer Drive::execute(const Request& request)
{
    const Lock lock{m_state};
    const std::uint64_t number = nextNumber();
    takeConfig();
    FaultVerdict verdict;
    Answer answer;
    if (struck(FaultKind::Gone)) {
        answer.error = ENODEV;
    } else {
        verdict = judge(m_config->faults, request.cdb[0], subjectOf(request.cdb, request.dataOut),
                        m_state->faultCounters.data(), kMaxFaults);
        refreshDisc();
        refreshCue();
        answer = answerTo(request, verdict);
        wait(answer, request, verdict.delayMs);
    }
    if (request.cdb[0] != 0x03) {
        m_state->lastSense = answer.sense;
    }
    note(number, request, answer, verdict);
    return answer;
}

} // namespace zib::drive
