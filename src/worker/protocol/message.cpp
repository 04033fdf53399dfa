#include "worker/protocol/message.h"

#include <cmath>

#include "worker/protocol/archive.h"
#include "worker/protocol/text.h"

namespace boxlift::worker {

template <>
inline constexpr unsigned valueCount<Target> = allTargets.size();
template <>
inline constexpr unsigned valueCount<SizeOption> = allSizeOptions.size();
template <>
inline constexpr unsigned valueCount<Mode> = static_cast<unsigned>(Mode::reencode) + 1;
template <>
inline constexpr unsigned
    valueCount<media::ErrorKind> = static_cast<unsigned>(media::ErrorKind::unknown) + 1;

template <>
inline constexpr auto members<MediaInfo> = std::tuple(&MediaInfo::hasVideo, &MediaInfo::hasAudio,
                                                      &MediaInfo::videoCodec,
                                                      &MediaInfo::audioCodec, &MediaInfo::width,
                                                      &MediaInfo::height, &MediaInfo::duration);
template <>
inline constexpr auto members<AnalyzeRequest> = std::tuple(&AnalyzeRequest::source);
template <>
inline constexpr auto
    members<ConvertRequest> = std::tuple(&ConvertRequest::source, &ConvertRequest::info,
                                         &ConvertRequest::target, &ConvertRequest::size,
                                         &ConvertRequest::removeAudio, &ConvertRequest::output);
template <>
inline constexpr auto members<Ready> = std::tuple(&Ready::version, &Ready::missingRestraints);
template <>
inline constexpr auto members<Progress> = std::tuple(&Progress::fraction);
template <>
inline constexpr auto members<Refusal> = std::tuple(&Refusal::sentence);
template <>
inline constexpr auto members<Failure> = std::tuple(&Failure::kind, &Failure::technical);

namespace {

template <typename Message>
std::vector<std::byte> write(const Message& message) {
    Writer writer;
    writer.put(message);
    return writer.take();
}

template <typename Message>
Message read(std::span<const std::byte> bytes) {
    Message message;
    Reader reader(bytes);
    reader.get(message);
    reader.expectEnd();
    return message;
}

/// Of the longest text what fits.
struct Cut {
    void operator()(Ready& ready) const { cut(ready.missingRestraints); }
    void operator()(Refusal& refusal) const { cut(refusal.sentence); }
    void operator()(Failure& failure) const { cut(failure.technical); }
    template <typename Other>
    void operator()(Other&) const {}

    static void cut(std::string& text) {
        if (text.size() > longestText)
            text.resize(longestText);
    }
};

void require(bool makesSense) {
    if (!makesSense)
        throw MalformedMessage("the message makes no sense");
}

/// What a worker that no longer does what it was made for might say.
struct Check {
    void operator()(Ready& ready) const { makePrintable(ready.missingRestraints); }
    void operator()(Progress& progress) const {
        require(progress.fraction >= 0 && progress.fraction < 1);
    }
    void operator()(MediaInfo& info) const {
        require(info.hasVideo || info.hasAudio);
        require(info.hasVideo || (!info.videoCodec && info.width == 0 && info.height == 0));
        require(info.hasAudio || !info.audioCodec);
        require(info.width >= 0 && info.height >= 0);
    }
    void operator()(Mode&) const {}
    void operator()(Refusal& refusal) const {
        require(refusal.sentence.size() <= longestText && isLine(refusal.sentence));
    }
    void operator()(Failure& failure) const { makePrintable(failure.technical); }
};

} // namespace

std::vector<std::byte> encode(const Request& request) {
    return write(request);
}

std::vector<std::byte> encode(const Report& report) {
    Report fitting = report;
    std::visit(Cut(), fitting);
    return write(fitting);
}

Request decodeRequest(std::span<const std::byte> bytes) {
    return read<Request>(bytes);
}

Report decodeReport(std::span<const std::byte> bytes) {
    auto report = read<Report>(bytes);
    std::visit(Check(), report);
    return report;
}

} // namespace boxlift::worker
