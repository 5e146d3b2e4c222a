#include "faces/Items.h"

#include <QAction>
#include <QComboBox>
#include <QFont>
#include <QHeaderView>
#include <QMenu>
#include <QMenuBar>
#include <QStatusBar>
#include <QStyledItemDelegate>
#include <QTabWidget>
#include <QTableView>
#include <QToolBar>
#include <QToolButton>
#include <QTreeView>

#include <functional>

namespace zib {

namespace {

/// What items say besides their texts and boxes.
const QList<std::pair<int, QString>>& quietRoles()
{
    static const QList<std::pair<int, QString>> roles{{Qt::ToolTipRole, "tips"},
                                                      {Qt::StatusTipRole, "status tips"},
                                                      {Qt::WhatsThisRole, "whats this"},
                                                      {Qt::TextAlignmentRole, "alignment"},
                                                      {Qt::ForegroundRole, "foreground"},
                                                      {Qt::BackgroundRole, "background"},
                                                      {Qt::FontRole, "letters"},
                                                      {Qt::SizeHintRole, "size"},
                                                      {Qt::AccessibleTextRole, "spoken"},
                                                      {Qt::AccessibleDescriptionRole, "described"},
                                                      {Qt::UserRole, "data"}};
    return roles;
}

QString alignmentWords(const QVariant& value)
{
    return value.isValid() ? QString::number(value.toInt(), 16) : QString();
}

QString roleWords(int role, const QVariant& value)
{
    if (role == Qt::TextAlignmentRole)
        return alignmentWords(value);
    if (value.canConvert<QBrush>() && value.typeId() == QMetaType::QBrush)
        return value.value<QBrush>().color().name();
    if (value.typeId() == QMetaType::QFont)
        return value.value<QFont>().bold() ? "bold" : "other";
    return value.typeId() == QMetaType::QString ? worded(value) : value.toString();
}

QString rowWords(const QAbstractItemModel* model, int row)
{
    QStringList cells;
    for (int column = 0; column < model->columnCount(); ++column) {
        const QModelIndex index = model->index(row, column);
        const QVariant box = index.data(Qt::CheckStateRole);
        cells << (box.isValid() ? QString("[%1] ").arg(box.toInt() == Qt::Checked ? "x" : " ") : QString()) +
                     worded(QVariant(index.data().toString()));
    }
    return cells.join(" | ");
}

/// The values of a column, once when they are all the same.
QString columnWords(const QAbstractItemModel* model, int column,
                    const std::function<QString(const QModelIndex&)>& of)
{
    QStringList values;
    for (int row = 0; row < model->rowCount(); ++row)
        values << of(model->index(row, column));
    if (values.count(values.value(0)) == values.size())
        return values.value(0);
    return values.join(" | ");
}

WordPairs modelWords(const QAbstractItemModel* model)
{
    WordPairs words;
    for (int row = 0; row < model->rowCount(); ++row)
        words << std::pair{QString("row %1").arg(row + 1, 2, 10, QChar('0')), rowWords(model, row)};
    for (int column = 0; column < model->columnCount(); ++column) {
        const QString name = QString("column %1 ").arg(column);
        for (const auto& [role, word] : quietRoles())
            words << std::pair{
                name + word, columnWords(model, column, [role = role](const QModelIndex& index) {
                    const QVariant value = index.data(role);
                    const bool same = role == Qt::ToolTipRole && value.isValid() && value == index.data();
                    return same ? QString("the text") : roleWords(role, value);
                })};
        words << std::pair{name + "flags", columnWords(model, column, [](const QModelIndex& index) {
                               return QString::number(index.flags(), 16);
                           })};
    }
    return words;
}

QString sectionWords(const QHeaderView* header, int section)
{
    const auto mode = header->sectionResizeMode(section);
    const bool fills = mode == QHeaderView::Stretch ||
                       (header->stretchLastSection() && header->visualIndex(section) == header->count() - 1);
    const QAbstractItemModel* model = header->model();
    const QVariant alignment = model->headerData(section, header->orientation(), Qt::TextAlignmentRole);
    QStringList words{worded(model->headerData(section, header->orientation()))};
    words << (fills ? QString("fills") : QString::number(header->sectionSize(section)));
    words << QString("mode %1").arg(mode);
    if (alignment.isValid())
        words << "alignment " + alignmentWords(alignment);
    if (header->isSectionHidden(section))
        words << "hidden";
    if (header->visualIndex(section) != section)
        words << QString("at %1").arg(header->visualIndex(section));
    if (const QVariant tip = model->headerData(section, header->orientation(), Qt::ToolTipRole);
        tip.isValid())
        words << "tip " + worded(tip);
    return words.join(", ");
}

QString headerWords(const QHeaderView* header)
{
    QStringList words;
    for (const auto& [is, word] : {std::pair{header->isHidden(), "hidden"},
                                   {header->sectionsClickable(), "clickable"},
                                   {header->sectionsMovable(), "movable"},
                                   {header->highlightSections(), "highlighted"},
                                   {header->stretchLastSection(), "last fills"},
                                   {header->isSortIndicatorShown(), "sorted"}})
        if (is)
            words << word;
    return words.join(", ");
}

WordPairs viewWords(const QAbstractItemView* view)
{
    WordPairs words = modelWords(view->model());
    QStringList selected;
    for (const QModelIndex& index : view->selectionModel()->selectedIndexes())
        selected << QString("%1,%2").arg(index.row() + 1).arg(index.column());
    const QModelIndex current = view->currentIndex();
    words << std::pair{QString("selected"), selected.join(' ')};
    if (current.isValid())
        words << std::pair{QString("current"), QString("%1,%2").arg(current.row() + 1).arg(current.column())};
    const auto* table = qobject_cast<const QTableView*>(view);
    const auto* tree = qobject_cast<const QTreeView*>(view);
    if (const QHeaderView* header = table ? table->horizontalHeader() : tree ? tree->header() : nullptr) {
        words << std::pair{QString("header"), headerWords(header)};
        for (int section = 0; section < header->count(); ++section)
            words << std::pair{QString("header %1").arg(section), sectionWords(header, section)};
    }
    if (table)
        words << std::pair{QString("rows"), QString("%1 high, %2")
                                                .arg(table->verticalHeader()->defaultSectionSize())
                                                .arg(headerWords(table->verticalHeader()))};
    const QWidget* ground = view->viewport();
    if (ground->testAttribute(Qt::WA_SetCursor))
        words << std::pair{QString("ground pointer"), QString::number(ground->cursor().shape())};
    return words;
}

WordPairs comboWords(const QComboBox* box)
{
    WordPairs words;
    for (int i = 0; i < box->count(); ++i) {
        const QVariant data = box->itemData(i);
        const QString tip = box->itemData(i, Qt::ToolTipRole).toString();
        words << std::pair{QString("item %1").arg(i, 2, 10, QChar('0')),
                           worded(QVariant(box->itemText(i))) +
                               (data.isValid() ? " = " + data.toString() : QString()) +
                               (tip.isEmpty() ? QString() : ", tip " + worded(QVariant(tip)))};
    }
    return words;
}

QString actionNames(const QWidget* widget)
{
    QStringList names;
    for (const QAction* action : widget->actions())
        names << (action->isSeparator() ? QString("-")
                  : action->menu()      ? action->menu()->objectName()
                                        : action->objectName());
    return names.join(' ');
}

WordPairs toolbarWords(const QToolBar* bar)
{
    WordPairs words{{"items", actionNames(bar)}};
    for (QAction* action : bar->actions())
        if (const auto* button = qobject_cast<const QToolButton*>(bar->widgetForAction(action)))
            words << std::pair{action->objectName() + " button",
                               QString("tip %1, spoken %2, style %3%4")
                                   .arg(worded(button->toolTip()), worded(button->accessibleName()))
                                   .arg(button->toolButtonStyle())
                                   .arg(button->autoRaise() ? ", flat" : "")};
    return words;
}

/// The message, and how broad the panels lie beside each other: their shares are nowhere else to be seen.
WordPairs statusWords(const QStatusBar* bar)
{
    QStringList widths;
    for (const QWidget* panel : bar->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly))
        if (!panel->objectName().isEmpty() && !panel->isHidden())
            widths << QString::number(panel->width());
    return {{"message", bar->currentMessage().isEmpty() ? QString() : worded(bar->currentMessage())},
            {"panels", widths.join(' ')}};
}

WordPairs tabWords(const QTabWidget* tabs)
{
    WordPairs words;
    for (int i = 0; i < tabs->count(); ++i)
        words << std::pair{
            QString("tab %1").arg(i),
            worded(tabs->tabText(i)) + (tabs->isTabEnabled(i) ? "" : ", disabled") +
                (tabs->tabToolTip(i).isEmpty() ? QString() : ", tip " + worded(tabs->tabToolTip(i)))};
    return words;
}

} // namespace

WordPairs itemWords(QWidget* widget)
{
    if (const auto* view = qobject_cast<const QAbstractItemView*>(widget))
        return view->model() ? viewWords(view) : WordPairs{};
    if (const auto* box = qobject_cast<const QComboBox*>(widget))
        return comboWords(box);
    if (const auto* bar = qobject_cast<const QToolBar*>(widget))
        return toolbarWords(bar);
    if (const auto* bar = qobject_cast<const QStatusBar*>(widget))
        return statusWords(bar);
    if (const auto* tabs = qobject_cast<const QTabWidget*>(widget))
        return tabWords(tabs);
    if (qobject_cast<const QMenu*>(widget) || qobject_cast<const QMenuBar*>(widget))
        return {{"items", actionNames(widget)}};
    return {};
}

} // namespace zib
