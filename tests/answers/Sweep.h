#pragma once

#include "answers/Book.h"

namespace zib::answers {

/// Reads @p seed cut off behind every one of its bytes from @p from on.
void everyLength(Book& book, const QString& title, const QByteArray& seed, const Reader& read,
                 qsizetype from = 0);

/// Reads @p seed with each of the @p count bytes from @p from on made 0, 1, 7F, 80 and FF, one less and one
/// more, and with each of its bits turned.
void everyByte(Book& book, const QString& title, const QByteArray& seed, const Reader& read, qsizetype from,
               qsizetype count);

/// A number of @p bytes bytes that stands at @p at.
struct Field
{
    QString name{};
    qsizetype at = 0;
    int bytes = 4;
    bool isBigEndian = false;
};

/// Reads @p seed with the field holding each of @p values, one less and one more.
void everyValue(Book& book, const QString& title, const QByteArray& seed, const Reader& read,
                const Field& field, const QList<qint64>& values);

/// Reads the text @p seed with each of its letters left out, doubled, and replaced by each of @p others.
void everyLetter(Book& book, const QString& title, const QByteArray& seed, const Reader& read,
                 const QByteArrayList& others);

/// Reads the text @p seed with each of its lines left out, doubled, and put behind the next one.
void everyLine(Book& book, const QString& title, const QByteArray& seed, const Reader& read);

/// Reads the text @p seed with each of its numbers replaced: by nought, by one less and one more, and by each
/// of
/// @p others.
void everyNumber(Book& book, const QString& title, const QByteArray& seed, const Reader& read,
                 const QByteArrayList& others = {});

/// Reads every input kept in tests/NAME.inputs, one to a line in Base64.
void everyKept(Book& book, const QString& name, const Reader& read);

/// Reads every seed of the fuzz target @p name.
void everySeed(Book& book, const QString& name, const Reader& read);

} // namespace zib::answers
