#pragma once

#include <QTableView>

namespace zib {

/// A table whose rows are chosen as a whole: Home and End go to its ends, Left and Right scroll, and nothing
/// but those scrolls sideways. Only the left button's double click counts. When rows come into the empty
/// table the first one is selected; while it is empty it shows a hint.
class TrackTable final : public QTableView
{
    Q_OBJECT
    /// What the empty table says.
    Q_PROPERTY(QString hint READ hint WRITE setHint)
public:
    using QTableView::QTableView;

    QString hint() const { return m_hint; }
    void setHint(const QString& text);
    /// @returns the selected row, or -1.
    int selectedRow() const;
    /// Selects one row and brings it into view.
    void chooseRow(int row);
    /// Column whose texts the user finds rows by.
    void setNameColumn(int column) { m_nameColumn = column; }

    void scrollTo(const QModelIndex& index, ScrollHint hint = EnsureVisible) override;

protected:
    void rowsInserted(const QModelIndex& parent, int first, int last) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QString m_hint;
    int m_nameColumn = 0;
};

} // namespace zib
