#pragma once

#include <QtGlobal>

class CDRipperX;
class QTreeWidget;
class QString;

/// The rows of the ripper's list: row n tells of track n.
namespace zib::RipRows {

/// Gives the columns their widths; the file name takes what the others leave.
void layOutColumns(QTreeWidget* list);
/// Adds the row of a track, with what the ripper knows of it.
void add(QTreeWidget* list, CDRipperX& ripper, int track);
bool isTicked(const QTreeWidget* list, int track);
/// How many rows are ticked.
qint16 countTicked(const QTreeWidget* list);
QString fileName(const QTreeWidget* list, int track);

} // namespace zib::RipRows
