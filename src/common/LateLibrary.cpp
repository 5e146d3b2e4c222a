#include "common/LateLibrary.h"

#include <cstring>

#include <dlfcn.h>

namespace zib {

bool LateLibrary::load()
{
    std::call_once(m_once, [this] {
        m_handle = ::dlopen(m_file, RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
        if (!m_handle)
            m_why = ::strdup(::dlerror()); // For as long as the program runs, as the library would be.
    });
    return m_handle;
}

QString LateLibrary::trouble()
{
    if (load())
        return {};
    return QStringLiteral("A part of the system that this needs cannot be loaded (%1). Please install it "
                          "again, then restart the program.")
        .arg(QString::fromLocal8Bit(m_why));
}

void* LateLibrary::find(const char* function)
{
    return load() ? ::dlsym(m_handle, function) : nullptr;
}

} // namespace zib
