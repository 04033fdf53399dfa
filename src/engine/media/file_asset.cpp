#include "engine/media/file_asset.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <span>
#include <utility>

#include "engine/media/av/compat.h"
#include "engine/media/av/conversion.h"
#include "engine/media/av/demuxer.h"
#include "engine/media/box_bytes.h"
#include "engine/media/codec_codes.h"
#include "engine/media/error.h"
#include "engine/media/timeline.h"

namespace boxlift::media {

namespace {

Size naturalSizeOf(AVFormatContext& context, AVStream& stream) {
    const AVCodecParameters& parameters = *stream.codecpar;
    const AVRational aspect = av_guess_sample_aspect_ratio(&context, &stream, nullptr);
    const double stretch = aspect.num > 0 && aspect.den > 0 ? av_q2d(aspect) : 1;
    return {parameters.width * stretch, static_cast<double>(parameters.height)};
}

AffineTransform transformOf(const AVStream& stream) {
    const auto data = av::streamSideData(stream, AV_PKT_DATA_DISPLAYMATRIX);
    if (data.size() < 9 * sizeof(std::int32_t))
        return {};
    const Size stored{static_cast<double>(stream.codecpar->width),
                      static_cast<double>(stream.codecpar->height)};
    return av::toTransform(reinterpret_cast<const std::int32_t*>(data.data()), stored);
}

std::optional<FormatDescription> formatOf(const AVStream& stream, bool isMovie) {
    if (const auto code = codec_codes::codeOf(*stream.codecpar, isMovie))
        return FormatDescription{*code};
    return std::nullopt;
}

FileTrack::Facts factsOf(av::Demuxer& demuxer, AVStream& stream, const Timeline& timeline) {
    FileTrack::Facts facts;
    facts.streamIndex = stream.index;
    facts.mediaType = av::toMediaType(stream.codecpar->codec_type);
    facts.format = formatOf(stream, demuxer.isMovie());
    facts.timeRange = timeline.range(stream);
    if (facts.mediaType == MediaType::video) {
        facts.naturalSize = naturalSizeOf(demuxer.context(), stream);
        facts.preferredTransform = transformOf(stream);
    }
    return facts;
}

constexpr std::array movieStarts{fourCharCode("ftyp"), fourCharCode("moov"), fourCharCode("mdat"),
                                 fourCharCode("wide"), fourCharCode("free"), fourCharCode("skip"),
                                 fourCharCode("pnot")};

bool beginsLikeAMovie(const InputFile& file) {
    std::array<std::uint8_t, 8> start{};
    file.readAt(0, std::as_writable_bytes(std::span(start)));
    const auto type =
        static_cast<FourCharCode>(box_bytes::numberIn(std::span(start).subspan(4), 4));
    return std::ranges::find(movieStarts, type) != movieStarts.end();
}

/// While it opens a file, libavformat's demuxer takes the error that it gives fragments of such a
/// movie for a place in its list of them, and counts up from there: a thousand million steps for
/// every run of samples.
void refuseUnnumberedFragments(const MovieLayout& layout, const std::filesystem::path& path) {
    if (layout.isFragmented && layout.hasUnnumberedTrack())
        throw Error(ErrorKind::cannotDecode, "open source", path,
                    "a track of a fragmented movie has no number");
}

} // namespace

std::vector<FormatDescription> FileTrack::formatDescriptions() const {
    return m_facts.format ? std::vector{*m_facts.format} : std::vector<FormatDescription>();
}

std::shared_ptr<const FileAsset> FileAsset::open(std::shared_ptr<const InputFile> file,
                                                 std::stop_token stop) {
    std::optional<MovieLayout> layout;
    if (beginsLikeAMovie(*file))
        layout = MovieLayout::read(*file, stop);
    if (layout)
        refuseUnnumberedFragments(*layout, file->path());
    const auto demuxer = av::Demuxer::open(file, av::ProbeDepth::header, stop);
    const Timeline timeline = Timeline::of(*demuxer, stop, std::move(layout));
    std::shared_ptr<FileAsset> asset(new FileAsset(std::move(file)));
    AVFormatContext& context = demuxer->context();
    for (AVStream* stream : std::span(context.streams, context.nb_streams))
        if (!av::isPicture(*stream))
            asset->m_tracks.push_back(
                std::make_shared<FileTrack>(asset->m_file, factsOf(*demuxer, *stream, timeline)));
    asset->m_duration = timeline.duration();
    asset->m_isReadable = !timeline.isProtected();
    return asset;
}

} // namespace boxlift::media
