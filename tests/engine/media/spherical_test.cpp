#include "engine/media/spherical.h"

#include <gtest/gtest.h>

#include "engine/media/av/compat.h"
#include "engine/media/box_writer.h"
#include "engine/media/stream_maker.h"

namespace boxlift::media::spherical {

namespace {

using test::fullBox;
using test::u32;

template <typename Description>
Description& describe(AVStream& stream, AVPacketSideDataType type) {
    auto* data = av::newStreamSideData(stream, type, sizeof(Description));
    return *new (data) Description{};
}

std::string boxesOf(AVStream& stream) {
    const auto boxes = takeDescription(stream);
    return {boxes.begin(), boxes.end()};
}

std::string projected(const std::string& layout) {
    const std::string pose = fullBox("prhd", 0, u32(0x8000) + u32(0xffff'8000) + u32(0));
    return test::box("sv3d", fullBox("svhd", 0, std::string("Boxlift", 8)) +
                                 test::box("proj", pose + layout));
}

AVSphericalMapping& addMapping(AVStream& stream, AVSphericalProjection projection) {
    auto& mapping = describe<AVSphericalMapping>(stream, AV_PKT_DATA_SPHERICAL);
    mapping.projection = projection;
    mapping.yaw = 0x8000;
    mapping.pitch = -0x8000;
    return mapping;
}

} // namespace

TEST(Spherical, IsNotDescribedWherePicturesAreFlat) {
    test::StreamMaker maker;
    EXPECT_EQ(boxesOf(maker.add({.codec = AV_CODEC_ID_H264})), "");
}

TEST(Spherical, HasABoxForWhatEachEyeSees) {
    test::StreamMaker maker;
    AVStream& stream = maker.add({.codec = AV_CODEC_ID_H264});
    describe<AVStereo3D>(stream, AV_PKT_DATA_STEREO3D).type = AV_STEREO3D_SIDEBYSIDE;
    EXPECT_EQ(boxesOf(stream), fullBox("st3d", 0, "\2"));
    describe<AVStereo3D>(stream, AV_PKT_DATA_STEREO3D).type = AV_STEREO3D_CHECKERBOARD;
    EXPECT_EQ(boxesOf(stream), "") << "there is no number for it";
}

TEST(Spherical, HasBoxesForTheSphereAndTheCube) {
    test::StreamMaker maker;
    AVStream& sphere = maker.add({.codec = AV_CODEC_ID_H264});
    addMapping(sphere, AV_SPHERICAL_EQUIRECTANGULAR_TILE).bound_left = 7;
    EXPECT_EQ(boxesOf(sphere), projected(fullBox("equi", 0, u32(0) + u32(0) + u32(7) + u32(0))));
    AVStream& cube = maker.add({.codec = AV_CODEC_ID_H264});
    addMapping(cube, AV_SPHERICAL_CUBEMAP).padding = 3;
    EXPECT_EQ(boxesOf(cube), projected(fullBox("cbmp", 0, u32(0) + u32(3))));
}

TEST(Spherical, IsCopiedToAnotherStream) {
    test::StreamMaker maker;
    AVStream& stream = maker.add({.codec = AV_CODEC_ID_H264});
    addMapping(stream, AV_SPHERICAL_EQUIRECTANGULAR);
    AVStream& copy = maker.add({.codec = AV_CODEC_ID_H264});
    copyDescription(copy, stream);
    const std::string boxes = boxesOf(copy);
    EXPECT_NE(boxes, "");
    EXPECT_EQ(boxes, boxesOf(stream));
}

TEST(Spherical, IsToldOnceOnly) {
    test::StreamMaker maker;
    AVStream& stream = maker.add({.codec = AV_CODEC_ID_H264});
    describe<AVStereo3D>(stream, AV_PKT_DATA_STEREO3D).type = AV_STEREO3D_TOPBOTTOM;
    addMapping(stream, AV_SPHERICAL_CUBEMAP);
    av::newStreamSideData(stream, AV_PKT_DATA_DISPLAYMATRIX, 9 * sizeof(std::int32_t));
    EXPECT_NE(boxesOf(stream), "");
    EXPECT_TRUE(av::streamSideData(stream, AV_PKT_DATA_STEREO3D).empty());
    EXPECT_TRUE(av::streamSideData(stream, AV_PKT_DATA_SPHERICAL).empty());
    EXPECT_FALSE(av::streamSideData(stream, AV_PKT_DATA_DISPLAYMATRIX).empty());
    EXPECT_EQ(boxesOf(stream), "");
}

TEST(Spherical, StaysWithTheStreamWhereThereIsNoBoxForIt) {
    test::StreamMaker maker;
    AVStream& stream = maker.add({.codec = AV_CODEC_ID_H264});
    describe<AVStereo3D>(stream, AV_PKT_DATA_STEREO3D).type = AV_STEREO3D_CHECKERBOARD;
    EXPECT_EQ(boxesOf(stream), "");
    EXPECT_FALSE(av::streamSideData(stream, AV_PKT_DATA_STEREO3D).empty());
}

} // namespace boxlift::media::spherical
