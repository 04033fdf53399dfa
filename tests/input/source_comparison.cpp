#include "input/source_comparison.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <sstream>

#include "engine/media/asset.h"
#include "engine/media/encode_settings.h"
#include "support/media_boxes.h"

namespace boxlift::test {

namespace {

template <typename... Parts>
std::string join(const Parts&... parts) {
    std::ostringstream text;
    (text << ... << parts);
    return text.str();
}

/// Collects what differs.
class Comparison {
public:
    Comparison(const ConversionRequest& request, Mode mode)
        : m_request(request), m_mode(mode), m_source(probe(request.source)),
          m_output(probe(request.output)) {}

    std::vector<Difference> run() {
        const bool isTranscode = isAudio(m_request.target) && m_mode == Mode::reencode;
        if (isTranscode) {
            compareTranscode();
        } else {
            compareTracks(StreamKind::audio, !m_request.removeAudio);
            compareTracks(StreamKind::video, !isAudio(m_request.target));
        }
        compareDuration();
        checkIndex();
        return std::move(m_differences);
    }

private:
    template <typename... Parts>
    void report(const char* what, const Parts&... parts) {
        m_differences.push_back({what, join(parts...)});
    }

    template <typename Value>
    void expectEqual(const char* what, const char* name, const Value& source, const Value& output) {
        if (source != output)
            report(what, name, " is ", output, ", should be ", source);
    }

    void compareTranscode() {
        const auto tracks = filled(m_output, StreamKind::audio);
        expectEqual("tracks", "number of audio tracks", std::size_t{1}, tracks.size());
        expectEqual("tracks", "number of video tracks", std::size_t{0},
                    filled(m_output, StreamKind::video).size());
        for (const ProbedStream* track : tracks) {
            expectEqual("codec", "audio codec", std::string("aac"), track->codec);
            expectEqual("codec", "sample rate", 44100, track->sampleRate);
            expectEqual("codec", "channels", 2, track->channels);
        }
    }

    void compareTracks(StreamKind kind, bool isKept) {
        const auto sources = filled(m_source, kind);
        const auto outputs = filled(m_output, kind);
        const char* name =
            kind == StreamKind::video ? "number of video tracks" : "number of audio tracks";
        const std::size_t expected = isKept ? sources.size() : 0;
        expectEqual("tracks", name, expected, outputs.size());
        for (std::size_t i = 0; i < std::min(expected, outputs.size()); ++i)
            compareTrack(*sources[i], *outputs[i]);
    }

    void compareTrack(const ProbedStream& source, const ProbedStream& output) {
        if (source.kind == StreamKind::video)
            comparePictures(source, output);
        if (m_mode == Mode::reencode) {
            const std::string codec = source.kind == StreamKind::video ? "h264" : "aac";
            expectEqual("codec", "codec", codec, output.codec);
            return;
        }
        expectEqual("codec", "codec", source.codec, output.codec);
        comparePayload(source, output);
    }

    void comparePictures(const ProbedStream& source, const ProbedStream& output) {
        const media::PictureSize stored{source.width, source.height};
        const media::PixelAspect aspect{source.sampleAspect.numerator,
                                        source.sampleAspect.denominator};
        const auto size = m_mode == Mode::boxlift
                              ? stored
                              : media::fitted(stored, aspect, exportPreset(m_request.size));
        expectEqual("size", "width", size.width, output.width);
        expectEqual("size", "height", size.height, output.height);
        const DisplayMatrix before = source.displayMatrix.value_or(DisplayMatrix{});
        const DisplayMatrix after = output.displayMatrix.value_or(DisplayMatrix{});
        const std::array turns{after.a - before.a, after.b - before.b, after.c - before.c,
                               after.d - before.d};
        for (const double turn : turns)
            if (std::abs(turn) > 0.001)
                report("orientation", "the display matrix is another one");
    }

    void comparePayload(const ProbedStream& source, const ProbedStream& output) {
        // How many samples of PCM make a packet is up to the demuxer.
        if (source.codec.starts_with("pcm_")) {
            expectEqual("payload", "hash", source.payloadHash, output.payloadHash);
            return;
        }
        const auto before = hashesOfContent(source);
        const auto after = hashesOfContent(output);
        // A stream that is cut out of a longer one may begin with pictures that nothing can show.
        const bool mayBeginLater =
            source.kind == StreamKind::video && !m_source.format.starts_with("mov,");
        const std::size_t left =
            mayBeginLater && before.size() > after.size() ? before.size() - after.size() : 0;
        if (std::any_of(source.packets.begin(), source.packets.begin() + std::ptrdiff_t(left),
                        [](const ProbedPacket& packet) { return packet.isKey; }))
            report("payload", "pictures with key frames among them are left out");
        if (!std::equal(before.begin() + std::ptrdiff_t(left), before.end(), after.begin(),
                        after.end()))
            report("payload", source.codec, ": ", before.size(), " packets before, ", after.size(),
                   " after, or of other content");
    }

    static std::vector<std::uint64_t> hashesOfContent(const ProbedStream& stream) {
        std::vector<std::uint64_t> hashes;
        for (const ProbedPacket& packet : stream.packets)
            if (packet.size > 0)
                hashes.push_back(packet.payloadHash);
        return hashes;
    }

    /// Where the kept tracks end, by the media layer's own word on the source.
    double expectedEnd() const {
        double end = 0;
        const auto asset = media::defaultFactory().openAsset(m_request.source, {});
        for (const auto& track : asset->tracks()) {
            const bool isVideo = track->mediaType() == media::MediaType::video;
            const bool isKept =
                isVideo ? !isAudio(m_request.target)
                        : track->mediaType() == media::MediaType::audio && !m_request.removeAudio;
            const double trackEnd = track->timeRange().end().seconds();
            if (isKept && std::isfinite(trackEnd))
                end = std::max(end, trackEnd);
        }
        return end;
    }

    double tolerance() const {
        double tolerance = 0.05;
        for (const ProbedStream* track : filled(m_source, StreamKind::video)) {
            const Ratio rate = track->averageFrameRate;
            if (rate.numerator > 0)
                tolerance = std::max(tolerance, 1.0 * rate.denominator / rate.numerator);
        }
        for (const ProbedStream* track : filled(m_source, StreamKind::audio))
            if (track->sampleRate > 0)
                tolerance = std::max(tolerance, 2048.0 / track->sampleRate);
        return tolerance;
    }

    void compareDuration() {
        const double expected = expectedEnd();
        // What the movie's header says, which counts from the movie's zero.
        const double end = movieSeconds(m_request.output).value_or(-1);
        if (!(std::abs(end - expected) <= tolerance()))
            report("duration", "ends at ", end, " s, should end at ", expected, " s");
    }

    void checkIndex() {
        const auto boxes = topLevelBoxTypes(m_request.output);
        const auto index = std::find(boxes.begin(), boxes.end(), "moov");
        const auto data = std::find(boxes.begin(), boxes.end(), "mdat");
        if (index == boxes.end() || data == boxes.end())
            report("index", "there is no moov or no mdat");
        else if ((index < data) != (m_request.target == Target::mp4))
            report("index", "the index is at the wrong end");
    }

    const ConversionRequest& m_request;
    Mode m_mode;
    ProbedFile m_source;
    ProbedFile m_output;
    std::vector<Difference> m_differences;
};

} // namespace

std::vector<const ProbedStream*> filled(const ProbedFile& file, StreamKind kind) {
    auto streams = file.all(kind);
    std::erase_if(streams, [](const ProbedStream* stream) { return stream->packets.empty(); });
    return streams;
}

std::vector<Difference> compareWithSource(const ConversionRequest& request, Mode mode) {
    return Comparison(request, mode).run();
}

std::vector<Difference> checkProgress(const std::vector<double>& progress, int attempts) {
    std::vector<Difference> differences;
    if (progress.empty() || progress.back() != 1.0 ||
        std::count(progress.begin(), progress.end(), 1.0) != 1)
        differences.push_back({"progress", "does not end with the only 1"});
    int setbacks = 0;
    for (std::size_t i = 1; i < progress.size(); ++i)
        setbacks += progress[i] < progress[i - 1] ? 1 : 0;
    if (setbacks >= attempts)
        differences.push_back({"progress", "goes back"});
    return differences;
}

} // namespace boxlift::test
