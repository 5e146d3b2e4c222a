#pragma once

#include <QList>

#include <utility>

namespace zib {

/// A list of @p count samples that have no value yet, for those who write every one of them: the toolkit's
/// own lists begin with zeros, a whole pass over the memory.
template <typename Sample>
QList<Sample> unsetSamples(qsizetype count)
{
#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
    QList<Sample> samples;
    samples.resizeForOverwrite(count);
    return samples;
#else
    QArrayDataPointer<Sample> samples(QTypedArrayData<Sample>::allocate(count));
    samples.size = count;
    return QList<Sample>(std::move(samples));
#endif
}

} // namespace zib
