#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <stop_token>
#include <string_view>
#include <unordered_map>

#include "engine/media/factory.h"
#include "model/cancelled.h"
#include "model/convert_error.h"
#include "model/media_info.h"
#include "model/plan.h"

/// The conversion engine: operations without state. They block, so they are called on any thread
/// but the main one; each takes a stop token and throws Cancelled soon after a stop is asked.
///
/// Errors: ConvertError and media::Error, whose what() is a sentence for people.
namespace boxlift::Converter {

/// Fraction done, from 0.0 to 1.0; called on any thread. A success ends with one report of 1.0.
using Progress = std::function<void(double)>;

/// Extensions (lower case) of formats that are refused without a look, and the formats' names.
const std::unordered_map<std::string_view, std::string_view>& unsupportedExtensions();

/// Finds out what a file contains. Every failure is a ConvertError.
MediaInfo analyze(const std::filesystem::path& url, std::stop_token stop = {},
                  const media::Factory& factory = media::defaultFactory());

/// Turns one file into one output file and returns the mode that was really used. `output` is the
/// exact file to write: what stands there is removed first. On any error nothing of this call's
/// output is left.
Mode convert(const std::filesystem::path& url, const MediaInfo& info, Target target,
             SizeOption size, bool removeAudio, const std::filesystem::path& output,
             const Progress& progress, std::stop_token stop = {},
             const media::Factory& factory = media::defaultFactory());

/// An editable copy of `asset` with only the kinds of track asked for, each whole, at its own
/// place, with its orientation.
std::shared_ptr<media::MutableComposition>
composition(const media::Asset& asset, bool video, bool audio,
            const media::Factory& factory = media::defaultFactory());

/// Runs one export to its end, reporting progress every 0.1 s. The index is put in front for
/// MPEG-4 only.
void exportAsset(std::shared_ptr<const media::Asset> asset, ExportPreset preset, FileType type,
                 const std::filesystem::path& output, const Progress& progress,
                 std::stop_token stop = {},
                 const media::Factory& factory = media::defaultFactory());

/// Mixes all audio of `asset` into one stereo AAC track at 44.1 kHz in an M4A file. `bitrate` in
/// bit/s. Progress comes from the thread "boxlift.audio", per buffer.
void transcodeAudio(std::shared_ptr<const media::Asset> asset, int bitrate,
                    const std::filesystem::path& output, const Progress& progress,
                    std::stop_token stop = {},
                    const media::Factory& factory = media::defaultFactory());

/// Makes the output of an audio target: a copy where the plan allows and succeeds, else AAC.
Mode convertAudio(std::shared_ptr<const media::Asset> asset, const Plan& plan, Target target,
                  const std::filesystem::path& output, const Progress& progress,
                  std::stop_token stop = {},
                  const media::Factory& factory = media::defaultFactory());

} // namespace boxlift::Converter
