#pragma once

#include <QString>
#include <optional>

// The recorder's staging file is a fragmented MP4: a header, then one fragment (a "moof" box and its
// "mdat" box) about every second. A write that failed half-way (a full disk) leaves a fragment cut
// off at the end; players handle the cut differently, some refuse the whole file.
class FragmentedMp4 {
public:
    // Where the file would end without a cut-off box or a fragment whose data is missing; nothing when
    // the file cannot be read or does not begin like an MP4 file.
    static std::optional<qint64> completeLength(const QString& path);
    // Cuts such an incomplete end off; true when the file now ends after a whole box.
    static bool trimIncompleteEnd(const QString& path);
};
