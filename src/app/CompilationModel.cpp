#include "app/CompilationModel.h"

#include "common/GeneralAPI.h"

#include <QTextDocument>

#include <array>
#include <utility>

namespace zib {

namespace {

constexpr std::array<const char*, CompilationModel::ColumnCount> kCaptions{
    "#", "File name", "Title", "Artist", "Time", "File Size", "Location"};

/// Removing runs of rows one by one costs a pass over the rows each, so only this many are removed that way.
constexpr int kMostSingleRuns = 32;

constexpr qsizetype kTipLetters = 100; ///< Of a tip's line.

QString cellText(const CompilationRow& row, int column)
{
    switch (column) {
    case CompilationModel::Number:
        return row.number;
    case CompilationModel::FileName:
        return row.fileName;
    case CompilationModel::Title:
        return row.title;
    case CompilationModel::Artist:
        return row.artist;
    case CompilationModel::Time:
        return row.time;
    case CompilationModel::FileSize:
        return row.fileSize;
    case CompilationModel::Location:
        return row.location;
    default:
        return {};
    }
}

/// A tip that shows a title such as "<b>" letter for letter, and wraps a long one.
QString plainTip(const QString& text)
{
    return text.size() > kTipLetters || Qt::mightBeRichText(text) ? Qt::convertFromPlainText(text) : text;
}

QVariant alignmentOf(int column)
{
    const bool right = column == CompilationModel::Time || column == CompilationModel::FileSize;
    return QVariant((right ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
}

} // namespace

CompilationModel::Batch::Batch(CompilationModel& model) : m_model(model)
{
    Q_ASSERT(!model.m_batching);
    model.m_batching = true;
}

CompilationModel::Batch::~Batch()
{
    m_model.flush();
    m_model.m_batching = false;
}

bool CompilationModel::contains(const QString& path) const
{
    const QString name = GeneralAPI::GetFileNameOfPath(path);
    for (auto [at, end] = m_locationsByName.equal_range(name); at != end; ++at)
        if (GeneralAPI::JoinPath(at.value(), name) == path)
            return true;
    return false;
}

void CompilationModel::append(const CompilationRow& row)
{
    m_rows.append(row);
    m_checked.append(false);
    m_locationsByName.insert(row.fileName, row.location);
    if (!m_batching)
        flush();
}

void CompilationModel::flush()
{
    if (m_shown == count())
        return;
    beginInsertRows({}, m_shown, count() - 1);
    m_shown = count();
    endInsertRows();
}

void CompilationModel::clear()
{
    beginResetModel();
    m_rows.clear();
    m_checked.clear();
    m_locationsByName.clear();
    m_shown = 0;
    endResetModel();
}

void CompilationModel::swapFiles(int a, int b)
{
    std::swap(m_rows[a], m_rows[b]);
    std::swap(m_rows[a].number, m_rows[b].number);
    for (const int row : {a, b})
        emit dataChanged(index(row, FileName), index(row, Location));
}

void CompilationModel::setAllChecked(bool on)
{
    if (m_rows.isEmpty())
        return;
    m_checked.fill(on);
    emit dataChanged(index(0, Number), index(m_shown - 1, Number), {Qt::CheckStateRole});
}

int CompilationModel::removeChecked()
{
    const auto before = count();
    QList<std::pair<int, int>> runs; // From the last row to the first.
    for (int row = before - 1; row >= 0; --row) {
        if (!m_checked.at(row))
            continue;
        if (!runs.isEmpty() && runs.last().first == row + 1)
            runs.last().first = row;
        else
            runs.append({row, row});
    }
    if (runs.size() > kMostSingleRuns)
        keepUnchecked();
    else
        for (const auto& [first, last] : runs)
            removeRun(first, last);
    if (!runs.isEmpty())
        indexPaths();
    return before - count();
}

void CompilationModel::removeRun(int first, int last)
{
    beginRemoveRows({}, first, last);
    m_rows.remove(first, last - first + 1);
    m_checked.remove(first, last - first + 1);
    m_shown = count();
    endRemoveRows();
}

void CompilationModel::keepUnchecked()
{
    beginResetModel();
    QList<CompilationRow> kept;
    for (int row = 0; row < count(); ++row)
        if (!m_checked.at(row))
            kept.append(m_rows.at(row));
    m_rows = kept;
    m_checked = QList<bool>(m_rows.size(), false);
    m_shown = count();
    endResetModel();
}

void CompilationModel::indexPaths()
{
    m_locationsByName.clear();
    for (const CompilationRow& row : std::as_const(m_rows))
        m_locationsByName.insert(row.fileName, row.location);
}

void CompilationModel::renumber()
{
    for (int row = 0; row < count(); ++row)
        m_rows[row].number = QString::number(row + 1);
    if (m_shown > 0)
        emit dataChanged(index(0, Number), index(m_shown - 1, Number), {Qt::DisplayRole});
}

int CompilationModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_shown;
}

int CompilationModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int{ColumnCount};
}

Qt::ItemFlags CompilationModel::flags(const QModelIndex& index) const
{
    const Qt::ItemFlags usual = QAbstractTableModel::flags(index) | Qt::ItemNeverHasChildren;
    return index.isValid() && index.column() == Number ? usual | Qt::ItemIsUserCheckable : usual;
}

QVariant CompilationModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return cellText(m_rows.at(index.row()), index.column());
    case Qt::ToolTipRole:
        return plainTip(cellText(m_rows.at(index.row()), index.column()));
    case Qt::TextAlignmentRole:
        return alignmentOf(index.column());
    case Qt::CheckStateRole:
        if (index.column() == Number)
            return m_checked.at(index.row()) ? Qt::Checked : Qt::Unchecked;
        return {};
    default:
        return {};
    }
}

bool CompilationModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (role != Qt::CheckStateRole || !index.isValid() || index.column() != Number)
        return false;
    m_checked[index.row()] = value.toInt() == Qt::Checked;
    emit dataChanged(index, index, {Qt::CheckStateRole});
    return true;
}

QVariant CompilationModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= ColumnCount)
        return {};
    if (role == Qt::DisplayRole)
        return QString::fromLatin1(kCaptions.at(static_cast<size_t>(section)));
    return role == Qt::TextAlignmentRole ? alignmentOf(section) : QVariant();
}

} // namespace zib
