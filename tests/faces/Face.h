#pragma once

#include "faces/Words.h"

#include <QStringList>

#include <functional>

namespace zib {

/// A window's picture in words: what was recorded of it beside this file, stage by stage.
///
/// The words of the first stage stand in words/NAME.txt whole; each later stage has only what differs from
/// the one before it: a line for each property, by its new value, or "gone" where it is a plain control's
/// again. So a caption that is changed changes one line.
///
/// To record afresh what is meant to be different: run the test with ZIB_RECORD_FACES=1 and look at what git
/// says.
class Face
{
public:
    /// @param name of the file, without its ending.
    explicit Face(const QString& name) : m_name(name) {}

    /// What no two runs share, and what to say instead.
    void replace(const QString& text, const QString& with) { m_replaced << std::pair{text, with}; }
    /// What no two runs share: lines that begin so are not told.
    void leaveOut(const QString& what) { m_leftOut << what; }
    /// What stands before the first stage and is told elsewhere.
    void begin(const Words& words) { m_before = told(words); }
    void stage(const QString& title, const Words& words);
    /// Where the stages differ from what was recorded; nothing where they do not, or were recorded just now.
    QString difference() const;

private:
    QMap<QString, QString> told(Words words) const;
    QString path() const;

    QString m_name;
    QList<std::pair<QString, QString>> m_replaced;
    QStringList m_leftOut;
    QMap<QString, QString> m_before;
    QStringList m_lines;
};

} // namespace zib

#define COMPARE_FACE(face)                                                                                   \
    do {                                                                                                     \
        const QString unlike = (face).difference();                                                          \
        QVERIFY2(unlike.isEmpty(), qPrintable(unlike));                                                      \
    } while (false)
