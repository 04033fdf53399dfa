#pragma once

#include "engine/media/file_system.h"
#include "worker/protocol/descriptor.h"

namespace boxlift::worker {

/// The only files that a worker reads and writes: those that it was handed, whatever their paths
/// are. The output is one file, which each attempt begins anew; it gets its name elsewhere. Any
/// thread.
class HandedFiles : public media::FileSystem {
public:
    explicit HandedFiles(Descriptor source, Descriptor output = {})
        : m_source(std::move(source)), m_output(std::move(output)) {}

    std::shared_ptr<const media::InputFile>
    openInput(const std::filesystem::path& path) const override;
    std::unique_ptr<media::OutputFile>
    createOutput(const std::filesystem::path& path) const override;
    /// Nothing: who handed over the output has seen to what stood at its path.
    void clearOutput(const std::filesystem::path& output,
                     const std::filesystem::path& source) const override;

private:
    Descriptor m_source;
    Descriptor m_output;
};

} // namespace boxlift::worker
