#pragma once

#include <QtGlobal>

#include <future>
#include <thread>

namespace zib {

/// Has the toolkit do beside the making of the first window what that window would wait for one after the
/// other: reading the system's fonts, loading its image formats, finding the desktop's message bus. Nothing
/// of it is lost where it is not needed, and whoever needs it first waits for it as ever.
class HeadStart
{
public:
    /// Before the application object is made: begins with the fonts.
    HeadStart();
    /// The application object is there: the rest may begin. GUI thread.
    void applicationIsThere();
    /// Waits for the fonts; before the first text is measured.
    void awaitFonts();
    /// Waits for all of it; before the application object goes.
    void finish();
    ~HeadStart();
    Q_DISABLE_COPY_MOVE(HeadStart)

private:
    std::promise<bool> m_application; ///< Whether it came to be.
    bool m_isThere = false;
    std::thread m_fonts;
    std::thread m_formats;
    std::thread m_bus;
};

} // namespace zib
