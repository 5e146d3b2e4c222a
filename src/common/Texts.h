#pragma once

#include <QString>

namespace zib {

/// The product's name: window captions and the title of message boxes.
inline const QString kApplicationTitle = QStringLiteral("Zib CD Burner");
/// The product's web site, shown in the status bar and opened by "Visit Homepage".
inline const QString kHomePage = QStringLiteral("https://zibcdburner.example/");

/// The product's version, shown in the about box.
inline constexpr int kVersionMajor = 1;
inline constexpr int kVersionMinor = 0;
inline constexpr int kVersionRevision = 0;

// Texts that more than one window shows.
inline const QString kNoFilesInList = QStringLiteral("There are no files in the list!");
inline const QString kNothingChecked =
    QStringLiteral("There are no files checked in the list, \nplease check files to delete from the list!");
inline const QString kTooManyNames = QStringLiteral("So many names do not fit in one choice. "
                                                    "Choose fewer files, or drop them on this window.");

} // namespace zib
