#pragma once

#include "answers/Book.h"

namespace zib::answers {

/// Reads WAVE files of every kind of header, whole, cut and changed: formats, sizes that lie, chunks in odd
/// places.
void everyWav(Book& book, const Reader& read);

} // namespace zib::answers
