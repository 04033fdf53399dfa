#include "drive/events.h"

#include <optional>

#include "drive/json_line.h"
#include "model/mac_roman.h"

namespace boxlift::drive {

namespace {

JsonObject event(std::string_view name) {
    return JsonObject().text("event", name);
}

JsonObject eventOf(std::string_view name, const std::filesystem::path& url) {
    return event(name).text("url", url.native());
}

std::string_view modeName(Mode mode) {
    return mode == Mode::boxlift ? "boxlift" : "reencode";
}

std::optional<std::string> codeText(std::optional<FourCharCode> code) {
    if (!code)
        return std::nullopt;
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes += static_cast<char>((*code >> shift) & 0xFF);
    return macRomanToUtf8(bytes);
}

JsonObject infoObject(const MediaInfo& info) {
    return JsonObject()
        .boolean("hasVideo", info.hasVideo)
        .boolean("hasAudio", info.hasAudio)
        .textOrNull("videoCodec", codeText(info.videoCodec))
        .textOrNull("audioCodec", codeText(info.audioCodec))
        .integer("width", info.width)
        .integer("height", info.height)
        .number("duration", info.duration);
}

std::optional<JsonObject> planObject(const std::optional<Plan>& plan) {
    if (!plan)
        return std::nullopt;
    return JsonObject().text("mode", modeName(plan->mode)).text("detail", plan->detail);
}

} // namespace

std::string readyEvent(const Job& job) {
    return eventOf("ready", job.path())
        .object("info", infoObject(*job.info()))
        .text("summary", job.info()->summary())
        .text("target", rawValue(job.target()))
        .text("size", rawValue(job.size()))
        .boolean("removeAudio", job.removeAudio())
        .textOrNull("blocker", job.blocker())
        .objectOrNull("plan", planObject(job.plan()))
        .line();
}

std::string failedEvent(const std::filesystem::path& url, std::string_view message) {
    return eventOf("failed", url).text("message", message).line();
}

std::string progressEvent(const std::filesystem::path& url, double fraction) {
    return eventOf("progress", url).number("fraction", fraction).line();
}

std::string doneEvent(const std::filesystem::path& url, const std::filesystem::path& output,
                      Mode mode, double seconds) {
    return eventOf("done", url)
        .text("output", output.native())
        .text("mode", modeName(mode))
        .number("seconds", seconds)
        .line();
}

std::string cancelledEvent(const std::filesystem::path& url) {
    return eventOf("cancelled", url).line();
}

std::string finishedEvent(const Counts& counts) {
    return event("finished")
        .integer("done", counts.done)
        .integer("failed", counts.failed)
        .integer("blocked", counts.blocked)
        .line();
}

} // namespace boxlift::drive
