#pragma once

#include <QStringList>

class CDRipperX;
class QComboBox;
class QTreeWidget;

/// The rows of the ripper's list: row n tells of track n.
namespace zib::RipRows {

/// Gives the columns their widths; the file name takes what the others leave.
void layOutColumns(QTreeWidget* list);
/// Lists "AUTO" and the factors up to @p fastest, each with its factor as data; "AUTO" is selected.
void fillSpeeds(QComboBox* list, int fastest);
/// Adds the row of a track, with what the ripper knows of it.
void add(QTreeWidget* list, CDRipperX& ripper, int track);
bool isTicked(const QTreeWidget* list, int track);
/// How many rows are ticked.
qint16 countTicked(const QTreeWidget* list);
/// The names of the files that copying the ticked tracks would make.
QStringList namesToWrite(const QTreeWidget* list);
/// Takes the ticks from the rows of these files.
void untick(QTreeWidget* list, const QStringList& fileNames);
QString fileName(const QTreeWidget* list, int track);

} // namespace zib::RipRows
