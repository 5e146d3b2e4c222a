#include "engines/play/SdlDevice.h"

#include "common/OwnThread.h"
#include "common/Texts.h"
#include "engines/play/SampleQueue.h"
#include "engines/play/SdlLibrary.h"

#include <QByteArray>

#include <algorithm>
#include <bit>
#include <chrono>
#include <future>
#include <mutex>
#include <utility>

namespace zib {

namespace {

using namespace std::chrono_literals;

constexpr auto kLongestWait = 3s;
constexpr int kPortionsPerSecond = 20; // about 50 ms each: safe from clicks, and stopped soon enough
constexpr unsigned kLargestPortion = 32768;

/// SDL is entered by one thread at a time; whoever cannot get in knows that the one inside hangs.
std::timed_mutex& sdlDoor()
{
    static std::timed_mutex door;
    return door;
}

/// Runs @p job on a thread of its own and waits a bounded time for it.  @returns whether it ended.
template <typename Job>
bool runBounded(Job job)
{
    const auto ended = onOwnThread([job = std::move(job)] {
        if (!sdlDoor().try_lock_for(kLongestWait))
            return;
        const std::lock_guard inside(sdlDoor(), std::adopt_lock);
        job();
        SDL_TLSCleanup(); // what SDL keeps for a thread that is not its own
    });
    return ended.wait_for(kLongestWait) == std::future_status::ready;
}

/// What the desktop's mixer shows beside the volume of this program.
void nameOurselves()
{
    const QByteArray name = kApplicationTitle.toUtf8();
    SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
    SDL_SetHint(SDL_HINT_APP_NAME, name.constData());
    SDL_SetHint(SDL_HINT_AUDIO_DEVICE_APP_NAME, name.constData());
    SDL_SetHint(SDL_HINT_AUDIO_DEVICE_STREAM_NAME, "Music");
    SDL_SetHint(SDL_HINT_AUDIO_DEVICE_STREAM_ROLE, "music");
}

/// A broken promise inside SDL costs the sound at most, never the program.
SDL_AssertState goOn(const SDL_AssertData*, void*)
{
    return SDL_ASSERTION_ALWAYS_IGNORE;
}

/// Lends the program's icon to the sound server. Its client library takes it from the environment alone, at
/// every connection; it is taken out again so that programs started later do not carry it.
class LentIcon
{
public:
    LentIcon() : m_ours(!qEnvironmentVariableIsSet(kVariable))
    {
        if (m_ours)
            qputenv(kVariable, "zibcdburner");
    }
    ~LentIcon()
    {
        if (m_ours)
            qunsetenv(kVariable);
    }
    Q_DISABLE_COPY_MOVE(LentIcon)

private:
    static constexpr const char* kVariable = "PULSE_PROP_application.icon_name";

    const bool m_ours;
};

void pull(void* queue, Uint8* stream, int bytes)
{
    const auto samples = static_cast<std::size_t>(bytes) / sizeof(qint16);
    static_cast<SampleQueue*>(queue)->fill({reinterpret_cast<qint16*>(stream), samples});
}

/// The power of two next below 50 ms.
Uint16 portionFrames(int rateHz)
{
    const auto frames = std::bit_floor(static_cast<unsigned>(rateHz / kPortionsPerSecond + 1));
    return static_cast<Uint16>(std::min(frames, kLargestPortion));
}

/// @returns the device's number; 0 when it cannot be had.
SDL_AudioDeviceID openDevice(int rateHz, int channels, SampleQueue* queue)
{
    SDL_AudioSpec wanted{};
    wanted.freq = rateHz;
    wanted.format = AUDIO_S16SYS;
    wanted.channels = static_cast<Uint8>(channels);
    wanted.samples = portionFrames(rateHz);
    wanted.callback = pull;
    wanted.userdata = queue;
    if (!sdlLibrary.load())
        return 0;
    nameOurselves();
    SDL_SetAssertionHandler(goOn, nullptr);
    const LentIcon icon;
    if (SDL_InitSubSystem(SDL_INIT_AUDIO) != 0)
        return 0;
    const SDL_AudioDeviceID device = SDL_OpenAudioDevice(nullptr, 0, &wanted, nullptr, 0);
    if (device == 0)
        SDL_QuitSubSystem(SDL_INIT_AUDIO);
    else
        SDL_PauseAudioDevice(device, 0);
    return device;
}

void closeDevice(SDL_AudioDeviceID device)
{
    SDL_CloseAudioDevice(device);
    SDL_QuitSubSystem(SDL_INIT_AUDIO);
}

/// An opening that its caller may have given up.
struct Opening
{
    std::mutex mutex;
    bool abandoned = false;
    SDL_AudioDeviceID device = 0;
};

} // namespace

std::unique_ptr<SdlDevice> SdlDevice::open(int rateHz, int channels, std::shared_ptr<SampleQueue> queue)
{
    const auto opening = std::make_shared<Opening>();
    runBounded([opening, rateHz, channels, queue] {
        const SDL_AudioDeviceID device = openDevice(rateHz, channels, queue.get());
        const std::lock_guard lock(opening->mutex);
        opening->device = device;
        if (opening->abandoned && device != 0) {
            queue->shut();
            closeDevice(device);
        }
    });
    const std::lock_guard lock(opening->mutex);
    opening->abandoned = opening->device == 0;
    if (opening->abandoned)
        return nullptr;
    return std::unique_ptr<SdlDevice>(new SdlDevice(opening->device, std::move(queue)));
}

SdlDevice::SdlDevice(quint32 id, std::shared_ptr<SampleQueue> queue) : m_id(id), m_queue(std::move(queue)) {}

SdlDevice::~SdlDevice()
{
    runBounded([device = m_id, queue = m_queue] { closeDevice(device); });
}

bool SdlDevice::isLost() const
{
    return SDL_GetAudioDeviceStatus(m_id) == SDL_AUDIO_STOPPED;
}

} // namespace zib
