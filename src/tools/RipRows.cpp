#include "tools/RipRows.h"

#include "components/CDRipperX.h"

#include <QComboBox>
#include <QHeaderView>
#include <QTreeWidget>

namespace zib::RipRows {

namespace {

enum Column
{
    Number,
    FileName,
    Time,
    Type,
    Protected
};

const QString kAudio = QStringLiteral("Audio");
constexpr int kColumnPadding = 24;
constexpr int kRowPadding = 8;

} // namespace

void layOutColumns(QTreeWidget* list)
{
    QHeaderView* header = list->header();
    header->setStretchLastSection(false);
    header->setSectionResizeMode(FileName, QHeaderView::Stretch);
    const auto fit = [list, header](Column column, const QString& widest) {
        header->resizeSection(column, list->fontMetrics().horizontalAdvance(widest) + kColumnPadding);
    };
    fit(Number, QStringLiteral("[x] 99"));
    fit(Time, QStringLiteral("00:00:00"));
    fit(Type, kAudio);
    fit(Protected, list->headerItem()->text(Protected));
}

void fillSpeeds(QComboBox* list, int fastest)
{
    list->clear();
    list->addItem(QStringLiteral("AUTO"), 0);
    for (int factor = 1; factor <= fastest; factor += factor > 4 ? 4 : factor)
        list->addItem(QStringLiteral("%1X").arg(factor), factor);
    list->setCurrentIndex(0);
}

void add(QTreeWidget* list, CDRipperX& ripper, int track)
{
    ripper.trackStart(track);
    auto* row = new QTreeWidgetItem(list);
    row->setText(Number, QString::number(track));
    row->setText(FileName, QStringLiteral("Track%1.wav").arg(track));
    row->setText(Time, ripper.timeText(ripper.trackLength(track)));
    row->setText(Type, ripper.isAudioTrack(track) ? kAudio : QStringLiteral("Data"));
    row->setText(Protected, ripper.copyPermitted(track) ? QStringLiteral("NO") : QStringLiteral("YES"));
    row->setFlags(Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemIsUserCheckable |
                  Qt::ItemNeverHasChildren);
    row->setCheckState(Number, Qt::Unchecked);
    row->setSizeHint(Number, QSize(0, list->fontMetrics().height() + kRowPadding));
}

bool isTicked(const QTreeWidget* list, int track)
{
    const QTreeWidgetItem* row = list->topLevelItem(track - 1);
    return row && row->checkState(Number) == Qt::Checked;
}

qint16 countTicked(const QTreeWidget* list)
{
    int count = 0;
    for (int track = 1; track <= list->topLevelItemCount(); ++track)
        count += isTicked(list, track) ? 1 : 0;
    return static_cast<qint16>(count);
}

QStringList namesToWrite(const QTreeWidget* list)
{
    QStringList names;
    for (int track = 1; track <= list->topLevelItemCount(); ++track)
        if (isTicked(list, track) && list->topLevelItem(track - 1)->text(Type) == kAudio)
            names << fileName(list, track);
    return names;
}

void untick(QTreeWidget* list, const QStringList& fileNames)
{
    for (int row = 0; row < list->topLevelItemCount(); ++row)
        if (fileNames.contains(list->topLevelItem(row)->text(FileName)))
            list->topLevelItem(row)->setCheckState(Number, Qt::Unchecked);
}

QString fileName(const QTreeWidget* list, int track)
{
    const QTreeWidgetItem* row = list->topLevelItem(track - 1);
    return row ? row->text(FileName) : QString();
}

} // namespace zib::RipRows
