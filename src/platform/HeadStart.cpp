#include "platform/HeadStart.h"

#include "common/LateLibrary.h"

#include <QDBusConnection>
#include <QFont>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QImageReader>

#include <utility>

namespace zib {

namespace {

constinit LateLibrary fontconfig("libfontconfig.so.1"); // Loaded by the toolkit, or not needed.
constinit const LateFunction<int (*)()> readFonts(fontconfig, "FcInit");

/// Where the toolkit asks the message bus for a desktop's menu bar.
bool hasDesktop()
{
    const QString platform = QGuiApplication::platformName();
    return platform == u"xcb" || platform.startsWith(u"wayland");
}

} // namespace

HeadStart::HeadStart()
    : m_fonts([application = m_application.get_future()]() mutable {
          readFonts();
          if (application.get())
              QFontMetrics(QFont()).height(); // The toolkit's own list of them, which all threads share.
      })
{
}

void HeadStart::applicationIsThere()
{
    m_isThere = true;
    m_application.set_value(true);
    m_formats = std::thread([] { QImageReader::supportedImageFormats(); });
    if (hasDesktop())
        m_bus = std::thread([] { QDBusConnection::sessionBus(); });
}

void HeadStart::awaitFonts()
{
    if (m_fonts.joinable())
        m_fonts.join();
}

void HeadStart::finish()
{
    if (!std::exchange(m_isThere, true))
        m_application.set_value(false);
    for (std::thread* thread : {&m_fonts, &m_formats, &m_bus})
        if (thread->joinable())
            thread->join();
}

HeadStart::~HeadStart()
{
    finish();
}

} // namespace zib
