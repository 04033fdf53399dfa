#include "fidelity/losses.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <set>
#include <utility>

#include "fidelity/tag_losses.h"

namespace boxlift::fidelity {

namespace {

using test::ProbedFile;
using test::ProbedStream;
using test::StreamKind;

bool isFilled(const ProbedStream& stream) {
    return !stream.packets.empty();
}

class Comparison {
public:
    Comparison(const ProbedFile& source, const ProbedFile& output, const Outcome& outcome)
        : m_source(source), m_output(output), m_outcome(outcome) {}

    std::vector<Loss> run() {
        for (Loss& loss : tagLosses(m_source.metadata, m_output.metadata))
            m_losses.insert(std::move(loss));
        compareChapters();
        comparePictures();
        if (isAudio(m_outcome.target) && m_outcome.mode == Mode::reencode)
            compareMix();
        else
            compareTracks();
        compareOthers();
        return {m_losses.begin(), m_losses.end()};
    }

private:
    void add(std::string cause, std::string detail = {}) {
        m_losses.insert({std::move(cause), std::move(detail)});
    }

    void compareChapters() {
        const double end = m_source.durationSeconds.value_or(0);
        const auto isInside = [&](const test::ChapterSpec& chapter) { return chapter.start < end; };
        const auto inside = std::ranges::count_if(m_source.chapters, isInside);
        if (std::ssize(m_output.chapters) < inside)
            add("chapters");
        else if (m_output.chapters.size() < m_source.chapters.size())
            add("chapters behind the end");
    }

    static std::size_t pictures(const ProbedFile& file) {
        return static_cast<std::size_t>(
            std::ranges::count_if(file.streams, &ProbedStream::isAttachedPicture));
    }

    void comparePictures() {
        if (pictures(m_output) >= pictures(m_source))
            return;
        const auto isOdd = [](const ProbedStream& stream) {
            const bool isKind = stream.codec == "png" || stream.codec == "mjpeg";
            return stream.isAttachedPicture && (!isKind || stream.width <= 0);
        };
        add(std::ranges::any_of(m_source.streams, isOdd) ? "odd picture" : "picture");
    }

    void compareMix() {
        const auto tracks = m_source.all(StreamKind::audio);
        if (tracks.size() > 1)
            add("mixed tracks");
        if (tracks.size() == 1 && tracks[0]->channels > 2)
            add("mixed channels");
        if (tracks.size() == 1 && tracks[0]->sampleRate > 44100)
            add("sample rate");
    }

    void compareTracks() {
        if (!isAudio(m_outcome.target))
            compareKind(StreamKind::video);
        compareKind(StreamKind::audio);
    }

    void compareKind(StreamKind kind) {
        auto before = m_source.all(kind);
        const auto after = m_output.all(kind);
        std::erase_if(before, [](const ProbedStream* track) { return !isFilled(*track); });
        if (before.size() != after.size()) {
            add("tracks", std::to_string(before.size()) + " before, " +
                              std::to_string(after.size()) + " after");
            return;
        }
        for (std::size_t i = 0; i < before.size(); ++i)
            compareTrack(*before[i], *after[i]);
    }

    void compareTrack(const ProbedStream& before, const ProbedStream& after) {
        const auto spoken = [](const ProbedStream& track) {
            return track.language == "und" ? std::string() : track.language;
        };
        constexpr std::size_t codeLength = 3;
        if (spoken(before) != spoken(after))
            add(before.language.size() == codeLength ? "language" : "short language",
                before.language);
        if (before.isDefault && !after.isDefault)
            add("default flag");
        if (before.kind == StreamKind::video)
            compareVideo(before, after);
        else if (m_outcome.mode == Mode::reencode)
            compareSound(before, after);
    }

    void compareVideo(const ProbedStream& before, const ProbedStream& after) {
        const auto turns = [](const ProbedStream& track) {
            return track.displayMatrix.value_or(test::DisplayMatrix{});
        };
        const std::array differences{
            turns(before).a - turns(after).a, turns(before).b - turns(after).b,
            turns(before).c - turns(after).c, turns(before).d - turns(after).d};
        const auto matrix = turns(before);
        const double area = std::abs(matrix.a * matrix.d - matrix.b * matrix.c);
        for (const double difference : differences)
            if (std::abs(difference) > 0.001)
                add(std::abs(area - 1) > 0.001 ? "stretching matrix" : "orientation");
        if (before.projection != after.projection)
            add("projection", before.projection);
        if (before.stereo != after.stereo)
            add("stereo", before.stereo);
        if (m_outcome.mode == Mode::boxlift)
            compareDescription(before, after);
    }

    void compareDescription(const ProbedStream& before, const ProbedStream& after) {
        if (!before.colour.primaries.empty() && before.colour.primaries != after.colour.primaries)
            add("colour", before.colour.primaries);
        if (!before.colour.transfer.empty() && before.colour.transfer != after.colour.transfer)
            add("colour", before.colour.transfer);
        const test::Ratio aspect = before.sampleAspect;
        const bool isTold = aspect.numerator > 0 && aspect.numerator != aspect.denominator;
        if (isTold && !(after.sampleAspect == aspect))
            add("pixel aspect");
    }

    void compareSound(const ProbedStream& before, const ProbedStream& after) {
        if (after.channels < before.channels)
            add("folded channels");
        if (after.sampleRate < before.sampleRate)
            add("high sample rate");
    }

    void compareOthers() {
        for (const ProbedStream& stream : m_source.streams) {
            if (stream.kind == StreamKind::subtitle)
                compareText(stream);
            else if (stream.kind == StreamKind::data || stream.kind == StreamKind::other)
                compareData(stream);
        }
    }

    void compareText(const ProbedStream& stream) {
        if (stream.codec != "mov_text")
            add("foreign subtitles", stream.codec);
        else if (isAudio(m_outcome.target))
            add("text beside sound");
        else if (m_output.all(StreamKind::subtitle).empty())
            add("subtitles");
    }

    void compareData(const ProbedStream& stream) {
        // Chapters have been counted already.
        const bool isChapters = stream.codecTag == "text" && !m_source.chapters.empty();
        if (isChapters)
            return;
        if (stream.codecTag != "tmcd")
            add("data", stream.codecTag);
        else if (m_outcome.target != Target::mov)
            add("timecode");
        else if (!hasTimecode(m_output))
            add("timecode without picture");
    }

    static bool hasTimecode(const ProbedFile& file) {
        return std::ranges::any_of(
            file.streams, [](const ProbedStream& stream) { return stream.codecTag == "tmcd"; });
    }

    const ProbedFile& m_source;
    const ProbedFile& m_output;
    const Outcome& m_outcome;
    std::set<Loss> m_losses;
};

} // namespace

std::vector<Loss> lossesBetween(const test::ProbedFile& source, const test::ProbedFile& output,
                                const Outcome& outcome) {
    return Comparison(source, output, outcome).run();
}

} // namespace boxlift::fidelity
