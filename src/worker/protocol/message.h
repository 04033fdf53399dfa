#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

#include "engine/media/error.h"
#include "model/media_info.h"
#include "model/mode.h"
#include "model/size_option.h"
#include "model/target.h"

/// What an application and its workers say to each other.
namespace boxlift::worker {

/// Of both sides' messages; to be raised with any change to them.
inline constexpr std::uint32_t protocolVersion = 1;

/// The longest encoded message, in bytes: two of the longest paths, and some.
inline constexpr std::size_t longestMessage = 16384;

/// The longest text of a failure, in bytes; longer ones are cut.
inline constexpr std::size_t longestText = 4096;

// From the application. A worker answers each request with reports, of which one is final: what
// was asked for, or why it failed.

/// With one descriptor: the source, for reading. Answered by a MediaInfo.
struct AnalyzeRequest {
    /// Any bytes; the worker opens nothing by it.
    std::filesystem::path source;

    friend bool operator==(const AnalyzeRequest&, const AnalyzeRequest&) = default;
};

/// With two descriptors: the source, for reading, and the output, an empty file. Answered by
/// Progress, any number of times, and a Mode.
struct ConvertRequest {
    std::filesystem::path source;
    MediaInfo info;
    Target target = Target::mp4;
    SizeOption size = SizeOption::original;
    bool removeAudio = false;
    std::filesystem::path output;

    friend bool operator==(const ConvertRequest&, const ConvertRequest&) = default;
};

using Request = std::variant<AnalyzeRequest, ConvertRequest>;

// From the worker.

/// The first report of a worker, unasked: it is ready for requests.
struct Ready {
    std::uint32_t version = protocolVersion;
    /// Which of its restraints the system lacks, for the log; empty when it has them all.
    std::string missingRestraints;

    friend bool operator==(const Ready&, const Ready&) = default;
};

struct Progress {
    /// From 0 to less than 1.
    double fraction = 0;

    friend bool operator==(const Progress&, const Progress&) = default;
};

/// A ConvertError.
struct Refusal {
    std::string sentence;

    friend bool operator==(const Refusal&, const Refusal&) = default;
};

/// A media::Error.
struct Failure {
    media::ErrorKind kind = media::ErrorKind::unknown;
    std::string technical;

    friend bool operator==(const Failure&, const Failure&) = default;
};

using Report = std::variant<Ready, Progress, MediaInfo, Mode, Refusal, Failure>;

/// Bytes that are no message, or none that makes sense.
class MalformedMessage : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Cuts texts that are too long.
std::vector<std::byte> encode(const Request& request);
std::vector<std::byte> encode(const Report& report);

/// Throw MalformedMessage. Whatever the bytes are, what these return keeps to what is said above,
/// and sentences are lines of UTF-8.
Request decodeRequest(std::span<const std::byte> bytes);
Report decodeReport(std::span<const std::byte> bytes);

} // namespace boxlift::worker
