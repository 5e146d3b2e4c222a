#pragma once

#include "components/AudioLoss.h"

#include <QObject>
#include <QString>

#include <optional>

/// Looks into audio files: what they are, how long they last, what their tags say.
///
/// Calls are answered on the calling thread, from the file's headers; nothing of the sound is decoded.
class AudioInformation : public QObject
{
    Q_OBJECT
public:
    /// Which of a file's tags: the richer one (ID3v2, or RIFF INFO in a WAV file) or the old one (ID3v1).
    enum class TagKind
    {
        Main = 1,
        Old = 2
    };

    using QObject::QObject;
    ~AudioInformation() override;

    /// Whether the file is MP3 or WAV audio that can be decoded, judged by its content and never by its name.
    virtual bool isAudioFile(const QString& path) = 0;
    /// Opens a file for the questions below.  @returns false when it is no audio; every answer is then empty
    /// or 0.
    virtual bool open(const QString& path) = 0;

    /// The title from the main tag, else from the old one: its first line, trimmed, at most 1,000 characters;
    /// may be empty.
    virtual QString title() const = 0;
    /// The title as one kind of tag has it.
    virtual QString tagTitle(TagKind kind) const = 0;
    /// The artist from the main tag, else from the old one, cut like the title; may be empty.
    virtual QString artist() const = 0;
    /// Playing time in milliseconds, truncated, equal to what decoding the file gives.
    virtual qint32 durationMs() const = 0;
    /// Size of the opened file; nothing when the component does not know better than the file system.
    virtual std::optional<qint64> fileBytes() const { return std::nullopt; }
    virtual int sampleRate() const = 0; ///< Hz.
    virtual int channels() const = 0;
    /// Bits of a sample as stored; 16 for MP3. Integer PCM only is told by isPcm().
    virtual int bitsPerSample() const = 0;
    /// Whether the samples stand in the file as plain integer PCM (WAV format 1, extensible or not), each in
    /// as many bytes as its bits need.
    virtual bool isPcm() const = 0;
    /// What of the sound is lost as far as the headers tell.
    virtual zib::AudioLoss loss() const { return {}; }
};
