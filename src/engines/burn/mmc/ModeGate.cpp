#include "engines/burn/mmc/ModeGate.h"

#include <cstdlib>
#include <utility>

#include <libburn/libburn.h>

namespace zib {

struct ModeGate::Guarded
{
    ModeGate* gate;
    burn::burn_source* inner;
    bool begun = false;
};

ModeGate::ModeGate(std::shared_ptr<DriveLine> line, const WritePlan& plan, std::function<void()> cut)
    : m_line(std::move(line)), m_plan(plan), m_cut(std::move(cut))
{
}

void ModeGate::arm()
{
    m_starter = std::this_thread::get_id();
    m_armed = true;
}

burn::burn_source* ModeGate::guard(burn::burn_source* inner)
{
    // The library frees the struct itself, with free().
    auto* source = static_cast<burn::burn_source*>(std::calloc(1, sizeof(burn::burn_source)));
    if (!source)
        return nullptr;
    ++inner->refcount;
    source->refcount = 1;
    source->version = 1; // which has these two instead of read
    source->read_xt = &ModeGate::read;
    source->cancel = &ModeGate::cancel;
    source->get_size = &ModeGate::size;
    source->set_size = &ModeGate::setSize;
    source->free_data = &ModeGate::freeData;
    source->data = new Guarded{this, inner};
    return source;
}

std::optional<PlanFault> ModeGate::fault() const
{
    const std::lock_guard lock(m_mutex);
    return m_fault;
}

int ModeGate::read(burn::burn_source* source, unsigned char* buffer, int size)
{
    auto* guarded = static_cast<Guarded*>(source->data);
    if (!std::exchange(guarded->begun, true)) {
        ++guarded->gate->m_tracksBegun;
        if (!guarded->gate->mayBegin())
            return -1;
    }
    burn::burn_source* inner = guarded->inner;
    return inner->read ? inner->read(inner, buffer, size) : inner->read_xt(inner, buffer, size);
}

int ModeGate::cancel(burn::burn_source* source)
{
    burn::burn_source* inner = static_cast<Guarded*>(source->data)->inner;
    return !inner->read && inner->cancel ? inner->cancel(inner) : 1;
}

/// Asked on the library's thread between sending the plan and laying out the disc or the track.
off_t ModeGate::size(burn::burn_source* source)
{
    auto* guarded = static_cast<Guarded*>(source->data);
    ModeGate& gate = *guarded->gate;
    const bool laysOut =
        gate.m_armed && std::this_thread::get_id() != gate.m_starter && !gate.m_begun && !guarded->begun;
    if (laysOut)
        gate.pass();
    return guarded->inner->get_size(guarded->inner);
}

int ModeGate::setSize(burn::burn_source* source, off_t size)
{
    auto* guarded = static_cast<Guarded*>(source->data);
    return guarded->inner->set_size(guarded->inner, size);
}

void ModeGate::freeData(burn::burn_source* source)
{
    auto* guarded = static_cast<Guarded*>(source->data);
    burn::burn_source_free(guarded->inner);
    delete guarded;
}

/// A session has one plan, proved before its layout was sent; every track written by itself has its own.
bool ModeGate::mayBegin()
{
    const bool proved = m_begun && m_plan.sessionAtOnce;
    m_begun = true;
    return proved ? !fault() : pass();
}

bool ModeGate::pass()
{
    if (fault())
        return false;
    const std::optional<PlanFault> found = prove(*m_line, m_plan);
    if (!found)
        return true;
    {
        const std::lock_guard lock(m_mutex);
        m_fault = found;
    }
    m_cut();
    return false;
}

} // namespace zib
