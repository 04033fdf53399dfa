#include "engine/media/spherical.h"

#include <algorithm>
#include <new>
#include <optional>

#include "engine/media/av/compat.h"

namespace boxlift::media::spherical {

namespace {

using box_bytes::box;
using box_bytes::Bytes;
using box_bytes::put;

/// A version and flags.
constexpr std::uint64_t plainVersion = 0;

template <typename Description>
const Description* descriptionOf(const AVStream& stream, AVPacketSideDataType type) {
    const auto data = av::streamSideData(stream, type);
    return data.size() < sizeof(Description) ? nullptr
                                             : reinterpret_cast<const Description*>(data.data());
}

std::optional<int> stereoMode(AVStereo3DType type) {
    switch (type) {
    case AV_STEREO3D_2D:
        return 0;
    case AV_STEREO3D_TOPBOTTOM:
        return 1;
    case AV_STEREO3D_SIDEBYSIDE:
        return 2;
    default:
        return std::nullopt;
    }
}

Bytes stereoBox(const AVStream& stream) {
    const auto* stereo = descriptionOf<AVStereo3D>(stream, AV_PKT_DATA_STEREO3D);
    const auto mode = stereo ? stereoMode(stereo->type) : std::nullopt;
    if (!mode)
        return {};
    Bytes contents;
    put(contents, plainVersion, 4);
    put(contents, static_cast<std::uint64_t>(*mode), 1);
    return box(fourCharCode("st3d"), contents);
}

void putAngle(Bytes& bytes, std::int32_t angle) {
    put(bytes, static_cast<std::uint32_t>(angle), 4);
}

Bytes poseBox(const AVSphericalMapping& mapping) {
    Bytes contents;
    put(contents, plainVersion, 4);
    for (const std::int32_t angle : {mapping.yaw, mapping.pitch, mapping.roll})
        putAngle(contents, angle);
    return box(fourCharCode("prhd"), contents);
}

/// How the surface is laid out; empty for layouts that there is no box for.
Bytes layoutBox(const AVSphericalMapping& mapping) {
    Bytes contents;
    put(contents, plainVersion, 4);
    switch (mapping.projection) {
    case AV_SPHERICAL_EQUIRECTANGULAR:
    case AV_SPHERICAL_EQUIRECTANGULAR_TILE:
        for (const std::uint32_t bound :
             {mapping.bound_top, mapping.bound_bottom, mapping.bound_left, mapping.bound_right})
            put(contents, bound, 4);
        return box(fourCharCode("equi"), contents);
    case AV_SPHERICAL_CUBEMAP:
        put(contents, 0, 4);
        put(contents, mapping.padding, 4);
        return box(fourCharCode("cbmp"), contents);
    default:
        return {};
    }
}

Bytes projectionBox(const AVStream& stream) {
    const auto* mapping = descriptionOf<AVSphericalMapping>(stream, AV_PKT_DATA_SPHERICAL);
    const Bytes layout = mapping ? layoutBox(*mapping) : Bytes();
    if (layout.empty())
        return {};
    Bytes maker;
    put(maker, plainVersion, 4);
    put(maker, "Boxlift");
    put(maker, 0, 1);
    Bytes projection = poseBox(*mapping);
    put(projection, layout);
    Bytes contents = box(fourCharCode("svhd"), maker);
    put(contents, box(fourCharCode("proj"), projection));
    return box(fourCharCode("sv3d"), contents);
}

} // namespace

Bytes takeDescription(AVStream& stream) {
    const Bytes stereo = stereoBox(stream);
    const Bytes projection = projectionBox(stream);
    if (!stereo.empty())
        av::removeStreamSideData(stream, AV_PKT_DATA_STEREO3D);
    if (!projection.empty())
        av::removeStreamSideData(stream, AV_PKT_DATA_SPHERICAL);
    Bytes boxes = stereo;
    put(boxes, projection);
    return boxes;
}

void copyDescription(AVStream& to, const AVStream& from) {
    for (const AVPacketSideDataType type : {AV_PKT_DATA_SPHERICAL, AV_PKT_DATA_STEREO3D}) {
        const auto data = av::streamSideData(from, type);
        if (data.empty())
            continue;
        std::uint8_t* copy = av::newStreamSideData(to, type, data.size());
        if (!copy)
            throw std::bad_alloc();
        std::ranges::copy(data, copy);
    }
}

} // namespace boxlift::media::spherical
