#include "input/long_conversion.h"

#include "input/sources.h"

namespace boxlift::test {

MediaSpec soundToCopy(double seconds) {
    return {.format = "mov",
            .seconds = seconds,
            .audio = {{.codec = "pcm_s32le", .sampleRate = 96000, .signal = Signal::silence}}};
}

MediaSpec filmToEncode(double seconds) {
    return {.format = "mov", .seconds = seconds, .video = {{.width = 640, .height = 480}}};
}

MediaSpec songToTranscode(double seconds) {
    return {.format = "mov", .seconds = seconds, .audio = {{.codec = "pcm_s16le"}}};
}

void LongConversion::SetUp() {
    const LongWay& way = GetParam();
    m_source = makeSource(m_folder.path(), "source.mov", way.source());
    m_contents = readFile(m_source);
    m_out = makeOutputFolder(m_folder.path());
    m_request = {.source = m_source,
                 .info = Converter::analyze(m_source),
                 .target = way.target,
                 .output = m_out / "out",
                 .size = way.size};
}

void LongConversion::TearDown() {
    EXPECT_TRUE(readFile(m_source) == m_contents);
}

} // namespace boxlift::test
