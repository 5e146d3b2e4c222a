#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <cstdio>
#include <functional>

namespace zib::answers {

/// What a reader answers, in words: one line for each field, each beginning with a name of its own.
using Answer = QStringList;
/// Something that reads bytes.
using Reader = std::function<Answer(const QByteArray&)>;

/// The answers of a reader to many inputs, told in the order of the inputs and compared with those that were
/// recorded.
///
/// They stand in tests/NAME.txt. With ZIB_RECORD_ANSWERS=1 in the environment the file is written afresh
/// instead; what changed in it is then to be read before it is committed. Neighbouring inputs with one answer
/// share a line, so that the file says where the answer changes.
class Book
{
public:
    /// @param name of the file, below tests and without its ending.
    explicit Book(const QString& name);

    /// Begins a chapter. Its answers are told in full, or only by what tells them from @p usual.
    void chapter(const QString& title, const Answer& usual = {});
    /// One input and its answer; @p input is best a number, or a word.
    void tell(const QString& input, const Answer& answer);
    /// Several inputs of one place: which of them have which answer.
    void tellAll(const QString& place, const QList<std::pair<QString, Answer>>& answers);

    /// Compares all that was told with what was recorded.  @returns the lines that differ, or nothing.
    QByteArray differences();

private:
    QString told(const Answer& answer) const;
    void add(const QString& input, const QString& text);
    void flush();

    QString m_path;
    QStringList m_lines;
    Answer m_usual;
    QStringList m_inputs; // of the line that is being gathered
    QString m_text;
};

} // namespace zib::answers

/// Fails when @p book differs from what was recorded, and prints what differs.
#define ZIB_COMPARE_ANSWERS(book)                                                                            \
    do {                                                                                                     \
        const QByteArray differences = (book).differences();                                                 \
        std::printf("%s%s", differences.constData(), differences.isEmpty() ? "" : "\n");                     \
        QVERIFY2(differences.isEmpty(), "these answers are not the recorded ones");                          \
    } while (false)
