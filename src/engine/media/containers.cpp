#include "engine/media/containers.h"

#include <algorithm>
#include <array>

namespace boxlift::media::containers {

namespace {

enum class Header { full, partial };

struct Row {
    std::string_view demuxer;
    Header header;
};

constexpr std::array rows{
    Row{"mov,mp4,m4a,3gp,3g2,mj2", Header::full},
    Row{"wav", Header::full},
    Row{"w64", Header::full},
    Row{"aiff", Header::full},
    Row{"caf", Header::full},
    Row{"flac", Header::full},
    Row{"mp3", Header::partial},
    Row{"aac", Header::partial},
    Row{"ac3", Header::partial},
    Row{"eac3", Header::partial},
    Row{"au", Header::partial},
    Row{"amr", Header::partial},
    Row{"mpeg", Header::partial},
    Row{"mpegvideo", Header::partial},
    Row{"mpegts", Header::partial},
    Row{"dv", Header::partial},
};

/// What a file of one kind, and of no other, begins with.
struct SignatureRow {
    std::size_t offset;
    std::string_view bytes;
    const char* demuxer;
};

constexpr std::array signatures{
    SignatureRow{4, "ftyp", "mov"},
    SignatureRow{0, "fLaC", "flac"},
    SignatureRow{0, "caff", "caf"},
};

} // namespace

const char* demuxerOf(std::string_view start) {
    for (const SignatureRow& row : signatures)
        if (start.size() > row.offset && start.substr(row.offset).starts_with(row.bytes))
            return row.demuxer;
    return nullptr;
}

const std::string& allowedDemuxers() {
    static const std::string names = [] {
        std::string joined;
        for (const Row& row : rows)
            joined.append(joined.empty() ? "" : ",").append(row.demuxer);
        return joined;
    }();
    return names;
}

bool hasFullHeader(std::string_view demuxer) {
    return std::any_of(rows.begin(), rows.end(), [demuxer](const Row& row) {
        return row.demuxer == demuxer && row.header == Header::full;
    });
}

} // namespace boxlift::media::containers
