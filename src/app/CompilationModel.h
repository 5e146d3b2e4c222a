#pragma once

#include "common/CompilationRow.h"

#include <QAbstractTableModel>
#include <QList>
#include <QMultiHash>

namespace zib {

/// The compilation: one row for each track of the disc, in disc order, and the ticks of the rows.
///
/// A row's path is always joined from its location and file name. Nothing here costs more than one pass over
/// the rows; adding a row and looking for a path cost the same however long the list is.
class CompilationModel final : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column
    {
        Number,
        FileName,
        Title,
        Artist,
        Time,
        FileSize,
        Location,
        ColumnCount
    };

    /// Holds back the news of appended rows until flush() or the end of its life, since a view that is told
    /// of each row alone spends seconds on a long list. Batches do not nest, and rows are only appended while
    /// one lives.
    class Batch
    {
    public:
        explicit Batch(CompilationModel& model);
        ~Batch();
        Q_DISABLE_COPY_MOVE(Batch)

    private:
        CompilationModel& m_model;
    };

    using QAbstractTableModel::QAbstractTableModel;

    /// All rows, those included that a batch still holds back from the views.
    const QList<CompilationRow>& rows() const { return m_rows; }
    int count() const { return static_cast<int>(m_rows.size()); }
    /// Whether a row's path equals @p path, letter for letter.
    bool contains(const QString& path) const;
    bool isChecked(int row) const { return m_checked.at(row); }

    void append(const CompilationRow& row);
    /// Tells the views of the rows that a batch holds back.
    void flush();
    void clear();
    /// Exchanges the files of two rows; numbers and ticks stay at their places.
    void swapFiles(int a, int b);
    void setAllChecked(bool on);
    /// Removes the ticked rows.  @returns how many there were.
    int removeChecked();
    /// Numbers the rows from 1.
    void renumber();

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    void removeRun(int first, int last);
    void keepUnchecked();
    void indexPaths();

    QList<CompilationRow> m_rows;
    QList<bool> m_checked;
    QMultiHash<QString, QString> m_locationsByName;
    int m_shown = 0; ///< Rows that the views know of.
    bool m_batching = false;
};

} // namespace zib
