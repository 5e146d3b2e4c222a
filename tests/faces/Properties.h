#pragma once

#include <QList>
#include <QString>

#include <utility>

class QObject;
class QVariant;
class QWidget;

namespace zib {

using WordPairs = QList<std::pair<QString, QString>>;

/// The properties of an object that differ from those of a plain one of its kind, out of a list of names that
/// every version of the toolkit has; and for widgets what is no property: colours and letters that differ
/// from the parent's, the pointer, attributes, margins.
WordPairs propertyWords(QObject* object);

/// What a window is: its kind and hints, its size, and its place where the program chose that.
QString windowWords(const QWidget* window);

/// A value in words: texts in quotes.
QString worded(const QVariant& value);

} // namespace zib
