#include "road/SessionManager.h"

#include <array>
#include <atomic>
#include <cstdlib>
#include <thread>
#include <vector>

#include <poll.h>

#include <X11/SM/SMlib.h>

namespace {

/// The conversation with the one client.
struct Talk
{
    IceConn line = nullptr;
    SmsConn client = nullptr;
    std::atomic<bool> registered = false;
    std::atomic<bool> announced = false;
    std::atomic<bool> answered = false;
    std::atomic<bool> kept = false;
};

Talk& talkOf(SmPointer data)
{
    return *static_cast<Talk*>(data);
}

Status registerClient(SmsConn client, SmPointer data, char* previous)
{
    std::free(previous);
    char* id = SmsGenerateClientID(client);
    SmsRegisterClientReply(client, id);
    std::free(id);
    talkOf(data).registered = true;
    // As the protocol has it for a client that is new.
    SmsSaveYourself(client, SmSaveLocal, False, SmInteractStyleNone, False);
    return 1;
}

void interact(SmsConn client, SmPointer, int)
{
    SmsInteract(client);
}

void interacted(SmsConn client, SmPointer data, Bool keep)
{
    talkOf(data).kept = keep != False;
    if (keep != False)
        SmsShutdownCancelled(client);
}

void saved(SmsConn client, SmPointer data, Bool)
{
    Talk& talk = talkOf(data);
    talk.answered = talk.announced.load();
    SmsSaveComplete(client);
}

void closed(SmsConn client, SmPointer data, int count, char** reasons)
{
    SmFreeReasons(count, reasons);
    SmsCleanUp(client);
    talkOf(data).client = nullptr;
}

void freeProperties(SmsConn, SmPointer, int count, SmProp** properties)
{
    for (int i = 0; i < count; ++i)
        SmFreeProperty(properties[i]);
    std::free(properties);
}

Status greet(SmsConn client, SmPointer data, unsigned long* mask, SmsCallbacks* calls, char**)
{
    talkOf(data).client = client;
    *mask = SmsRegisterClientProcMask | SmsInteractRequestProcMask | SmsInteractDoneProcMask |
            SmsSaveYourselfRequestProcMask | SmsSaveYourselfP2RequestProcMask | SmsSaveYourselfDoneProcMask |
            SmsCloseConnectionProcMask | SmsSetPropertiesProcMask | SmsDeletePropertiesProcMask |
            SmsGetPropertiesProcMask;
    calls->register_client = {registerClient, data};
    calls->interact_request = {interact, data};
    calls->interact_done = {interacted, data};
    calls->save_yourself_request = {[](SmsConn, SmPointer, int, Bool, int, Bool, Bool) {}, data};
    calls->save_yourself_phase2_request = {[](SmsConn asking, SmPointer) { SmsSaveYourselfPhase2(asking); },
                                           data};
    calls->save_yourself_done = {saved, data};
    calls->close_connection = {closed, data};
    calls->set_properties = {freeProperties, data};
    calls->delete_properties = {[](SmsConn, SmPointer, int, char**) {}, data};
    calls->get_properties = {[](SmsConn asking, SmPointer) { SmsReturnProperties(asking, 0, nullptr); },
                             data};
    return 1;
}

} // namespace

struct SessionManager::Parts
{
    /// All of the protocol happens here; a client waits for it as soon as it starts.
    void serve()
    {
        while (!over) {
            if (announce.exchange(false) && talk.client != nullptr)
                SmsSaveYourself(talk.client, SmSaveBoth, True, SmInteractStyleAny, False);
            if (die.exchange(false) && talk.client != nullptr)
                SmsDie(talk.client);
            waitAndTake();
        }
    }
    void waitAndTake()
    {
        constexpr int kStepMs = 50;
        std::vector<pollfd> doors;
        for (int i = 0; i < count; ++i)
            doors.push_back({IceGetListenConnectionNumber(listeners[i]), POLLIN, 0});
        if (talk.line != nullptr)
            doors.push_back({IceConnectionNumber(talk.line), POLLIN, 0});
        if (::poll(doors.data(), doors.size(), kStepMs) <= 0)
            return;
        if (talk.line != nullptr && doors.back().revents != 0)
            return take();
        for (int i = 0; i < count && talk.line == nullptr; ++i) {
            IceAcceptStatus status{};
            if (doors[static_cast<size_t>(i)].revents != 0)
                talk.line = IceAcceptConnection(listeners[i], &status);
        }
    }
    void take()
    {
        if (IceProcessMessages(talk.line, nullptr, nullptr) == IceProcessMessagesSuccess)
            return;
        talk.client = nullptr;
        talk.line = nullptr;
    }

    int count = 0;
    IceListenObj* listeners = nullptr;
    Talk talk{};
    std::atomic<bool> announce = false;
    std::atomic<bool> die = false;
    std::atomic<bool> over = false;
    std::thread thread{};
};

SessionManager::SessionManager() : m_parts(std::make_unique<Parts>())
{
    std::array<char, 256> error{};
    const auto size = static_cast<int>(error.size());
    IceSetIOErrorHandler([](IceConn) {}); // A client that goes is no reason to go as well.
    SmsInitialize(
        "Zib", "1", greet, &m_parts->talk, [](char*) -> Bool { return True; }, size, error.data());
    if (!IceListenForConnections(&m_parts->count, &m_parts->listeners, size, error.data()))
        m_parts->count = 0;
    for (int i = 0; i < m_parts->count; ++i)
        IceSetHostBasedAuthProc(m_parts->listeners[i], [](char*) -> Bool { return True; });
    m_parts->thread = std::thread([parts = m_parts.get()] { parts->serve(); });
}

SessionManager::~SessionManager()
{
    m_parts->over = true;
    m_parts->thread.join();
    if (m_parts->count > 0)
        IceFreeListenObjs(m_parts->count, m_parts->listeners);
}

QString SessionManager::address() const
{
    if (m_parts->count == 0)
        return {};
    char* list = IceComposeNetworkIdList(m_parts->count, m_parts->listeners);
    const QString address = QString::fromLocal8Bit(list);
    std::free(list);
    return address;
}

bool SessionManager::hasClient() const
{
    return m_parts->talk.registered;
}

void SessionManager::announceEnd()
{
    m_parts->talk.answered = m_parts->talk.kept = false;
    m_parts->talk.announced = true;
    m_parts->announce = true;
}

bool SessionManager::isAnswered() const
{
    return m_parts->talk.answered;
}

bool SessionManager::isKept() const
{
    return m_parts->talk.kept;
}

void SessionManager::end()
{
    m_parts->die = true;
}
