#pragma once

#include <QAbstractTableModel>
#include <QList>
#include <QSet>

namespace zib {

/// One file of the playlist, as its row shows it.
struct PlaylistRow
{
    QString fileName; ///< Without its folder.
    QString time;     ///< Minutes, seconds and hundredths.
    QString title;
    QString location; ///< The folder, with its trailing separator.
    bool ticked = false;

    /// The file's whole path, put together from location and file name.
    QString path() const;
};

/// The player's list of files; no path stands in it twice. Ten thousand rows are no burden: a view hears of
/// new ones in batches.
class Playlist final : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column
    {
        FileName,
        Time,
        Title,
        Location,
        ColumnCount
    };

    using QAbstractTableModel::QAbstractTableModel;
    ~Playlist() override;

    /// Whether a row, waiting ones included, has this path, letter for letter.
    bool contains(const QString& path) const { return m_paths.contains(path); }
    /// Adds a row behind the others; it shows after showWaiting().
    void append(const PlaylistRow& row);
    void showWaiting();
    /// Removes the ticked rows.  @returns whether there were any.
    bool removeTicked();
    /// @returns a row's path; an empty text when there is no such row.
    QString pathOf(int row) const;
    /// @returns the first row with this path, or -1.
    int rowOf(const QString& path) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    void removeRun(int first, int last);

    QList<PlaylistRow> m_rows;
    QList<PlaylistRow> m_waiting;
    QSet<QString> m_paths;
};

} // namespace zib
