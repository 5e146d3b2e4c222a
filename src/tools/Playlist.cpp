#include "tools/Playlist.h"

#include "common/GeneralAPI.h"

#include <algorithm>

namespace zib {

QString PlaylistRow::path() const
{
    return GeneralAPI::JoinPath(location, fileName);
}

Playlist::~Playlist() = default;

void Playlist::append(const PlaylistRow& row)
{
    m_waiting << row;
    m_paths << row.path();
}

void Playlist::showWaiting()
{
    if (m_waiting.isEmpty())
        return;
    const auto first = static_cast<int>(m_rows.size());
    beginInsertRows({}, first, first + static_cast<int>(m_waiting.size()) - 1);
    m_rows << m_waiting;
    m_waiting.clear();
    endInsertRows();
}

bool Playlist::removeTicked()
{
    const auto before = m_rows.size();
    for (auto last = static_cast<int>(before) - 1; last >= 0; --last) {
        if (!m_rows.at(last).ticked)
            continue;
        int first = last;
        while (first > 0 && m_rows.at(first - 1).ticked)
            --first;
        removeRun(first, last);
        last = first;
    }
    return m_rows.size() < before;
}

void Playlist::removeRun(int first, int last)
{
    beginRemoveRows({}, first, last);
    for (int row = first; row <= last; ++row)
        m_paths.remove(m_rows.at(row).path());
    m_rows.remove(first, last - first + 1);
    endRemoveRows();
}

QString Playlist::pathOf(int row) const
{
    return row >= 0 && row < m_rows.size() ? m_rows.at(row).path() : QString();
}

int Playlist::rowOf(const QString& path) const
{
    const auto found = std::find_if(m_rows.begin(), m_rows.end(),
                                    [&](const PlaylistRow& row) { return row.path() == path; });
    return found == m_rows.end() ? -1 : static_cast<int>(found - m_rows.begin());
}

int Playlist::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

int Playlist::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

Qt::ItemFlags Playlist::flags(const QModelIndex& index) const
{
    const Qt::ItemFlags plain = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
    return index.column() == FileName ? plain | Qt::ItemIsUserCheckable : plain;
}

QVariant Playlist::data(const QModelIndex& index, int role) const
{
    const PlaylistRow& row = m_rows.at(index.row());
    if (role == Qt::CheckStateRole && index.column() == FileName)
        return row.ticked ? Qt::Checked : Qt::Unchecked;
    if (role == Qt::TextAlignmentRole && index.column() == Time)
        return QVariant(Qt::AlignRight | Qt::AlignVCenter);
    if (role == Qt::ToolTipRole)
        return row.path();
    if (role != Qt::DisplayRole)
        return {};
    switch (index.column()) {
    case FileName:
        return row.fileName;
    case Time:
        return row.time;
    case Title:
        return row.title;
    default:
        return row.location;
    }
}

bool Playlist::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (role != Qt::CheckStateRole || index.column() != FileName)
        return false;
    m_rows[index.row()].ticked = value.toInt() == Qt::Checked;
    emit dataChanged(index, index, {Qt::CheckStateRole});
    return true;
}

QVariant Playlist::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal)
        return {};
    if (role == Qt::TextAlignmentRole)
        return QVariant((section == Time ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
    if (role != Qt::DisplayRole)
        return {};
    switch (section) {
    case FileName:
        return tr("File Name");
    case Time:
        return tr("Time");
    case Title:
        return tr("Title");
    default:
        return tr("Location");
    }
}

} // namespace zib
