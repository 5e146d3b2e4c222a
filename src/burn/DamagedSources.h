#pragma once

#include "components/AudioLoss.h"

#include <QSet>
#include <QString>
#include <QStringList>

namespace zib {

/// The files of one preparation that lack some of their sound, and what the user is told about them.
class DamagedSources
{
public:
    /// So many are named.
    static constexpr int kNamed = 10;

    /// Remembers @p source, once, if @p loss is any.  @param rateHz of the loss.
    void add(const QString& source, const AudioLoss& loss, int rateHz);
    /// All of them in their order, each with the place of its first loss and the length of all; empty when
    /// there are none.
    QString text() const;

private:
    QSet<QString> m_sources;
    QStringList m_lines; // of the first kNamed
};

} // namespace zib
