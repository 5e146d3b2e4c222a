#pragma once

#include <QString>

#include <memory>

/// A session manager of the X Window System (XSMP 1.0), as a desktop has one: it asks its one client whether
/// the session may end, and hears whether the client wants it kept. It serves on a thread of its own.
class SessionManager
{
public:
    SessionManager();
    ~SessionManager();
    Q_DISABLE_COPY_MOVE(SessionManager)

    /// What stands in the client's SESSION_MANAGER; empty where the manager could not start.
    QString address() const;
    bool hasClient() const;
    /// Announces the end of the session, once there is a client; questions to the user are allowed.
    void announceEnd();
    /// Whether the client has answered the announcement.
    bool isAnswered() const;
    /// Whether it wanted the session kept.
    bool isKept() const;
    /// Ends the session.
    void end();

private:
    struct Parts;
    std::unique_ptr<Parts> m_parts;
};
