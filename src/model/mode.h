#pragma once

namespace boxlift {

/// How a conversion is carried out.
enum class Mode {
    boxlift,  ///< The compressed tracks are copied unchanged into the new container.
    reencode, ///< At least one track is decoded and encoded again.
};

} // namespace boxlift
