#include "engines/cdtext/CdText.h"

#include "engines/cdtext/Latin1Text.h"

#include <algorithm>

namespace zib {

namespace {

constexpr int kTextBytesOfPack = 12;

using Texts = QList<QByteArray>;

bool isAllEmpty(const Texts& texts)
{
    return std::all_of(texts.cbegin(), texts.cend(), [](const QByteArray& text) { return text.isEmpty(); });
}

/// One kind of text of the whole disc, the disc's own first; nothing where there is none.
Texts textsOf(const QString& disc, const QList<TrackNames>& tracks, QString TrackNames::*kind)
{
    Texts texts{nearestLatin1(disc)};
    for (const TrackNames& names : tracks)
        texts << nearestLatin1(names.*kind);
    return isAllEmpty(texts) ? Texts() : texts;
}

Texts cutAt(Texts texts, int letters)
{
    for (QByteArray& text : texts)
        text = text.left(letters).trimmed();
    return texts;
}

int packCountOf(const Texts& texts)
{
    int bytes = 0;
    for (qsizetype i = 0; i < texts.size(); ++i) {
        const bool repeated = i > 1 && !texts[i].isEmpty() && texts[i] == texts[i - 1];
        bytes += static_cast<int>(repeated ? 1 : texts[i].size()) + 1;
    }
    return (bytes + kTextBytesOfPack - 1) / kTextBytesOfPack;
}

} // namespace

CdTextTable cdTextOf(const DiscNames& names)
{
    if (!names.haveTracksNames())
        return {};
    const CdTextTable whole{textsOf(names.title, names.tracks, &TrackNames::title),
                            textsOf(names.artist, names.tracks, &TrackNames::artist)};
    for (int letters = kLongestCdText; letters > 0; --letters) {
        const CdTextTable cut{cutAt(whole.titles, letters), cutAt(whole.performers, letters)};
        if (textPackCount(cut) <= kMostTextPacks)
            return cut;
    }
    return {};
}

int textPackCount(const CdTextTable& table)
{
    return packCountOf(table.titles) + packCountOf(table.performers);
}

} // namespace zib
