#pragma once

#include <deque>
#include <stdexcept>
#include <string>

#include "engine/media/factory.h"
#include "fakes/fake_asset_reader.h"
#include "fakes/fake_asset_writer.h"
#include "fakes/fake_composition.h"
#include "fakes/fake_export_session.h"

namespace boxlift::fakes {

/// A media layer that follows scripts and keeps a record. It outlives what it makes.
class FakeFactory : public media::Factory {
public:
    explicit FakeFactory(std::shared_ptr<const media::Asset> opened = nullptr)
        : asset(std::move(opened)) {}

    std::shared_ptr<const media::Asset> openAsset(const std::filesystem::path& path,
                                                  std::stop_token stop) const override {
        events.add("open " + path.string());
        openToken = std::move(stop);
        call(onOpen);
        throwIf(openError);
        return asset;
    }
    std::shared_ptr<media::MutableComposition> makeComposition() const override {
        events.add("composition");
        return composition;
    }
    std::unique_ptr<media::ExportSession>
    makeExportSession(std::shared_ptr<const media::Asset> source, ExportPreset preset,
                      std::stop_token) const override {
        events.add("session " + std::string(name(preset)));
        call(onMakeSession);
        if (exports.size() == sessions.size())
            throw std::logic_error("no script for this session");
        const SessionScript& script = sessions[exports.size()];
        exports.push_back({std::move(source), preset, {}, {}, {}, {}});
        if (!script.presetFits)
            return nullptr;
        return std::make_unique<FakeExportSession>(script, exports.back(), events);
    }
    std::unique_ptr<media::AssetReader>
    makeAssetReader(std::shared_ptr<const media::Asset> source) const override {
        events.add("reader");
        throwIf(reader.makeError);
        reading.asset = std::move(source);
        return std::make_unique<FakeAssetReader>(reader, reading, events);
    }
    std::unique_ptr<media::AssetWriter> makeAssetWriter(const std::filesystem::path& path,
                                                        FileType type) const override {
        events.add("writer " + path.string());
        call(onMakeWriter);
        throwIf(writer.makeError);
        writing.path = path;
        writing.type = type;
        return std::make_unique<FakeAssetWriter>(writer, writing, events);
    }
    void clearOutput(const std::filesystem::path& output,
                     const std::filesystem::path& source) const override {
        events.add("clear " + output.string() + " for " + source.string());
    }

    std::shared_ptr<const media::Asset> asset;
    std::exception_ptr openError;
    Hook onOpen;
    Hook onMakeSession;
    Hook onMakeWriter;
    std::shared_ptr<FakeComposition> composition = std::make_shared<FakeComposition>();
    /// One for each session, in the order in which they are made.
    std::vector<SessionScript> sessions;
    ReaderScript reader;
    WriterScript writer;

    mutable EventLog events;
    mutable std::stop_token openToken;
    mutable std::deque<SessionRecord> exports;
    mutable ReaderRecord reading;
    mutable WriterRecord writing;
};

} // namespace boxlift::fakes
