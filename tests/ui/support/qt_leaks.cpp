/// Asked by the leak sanitizer for what is not ours: without a graphics card Qt Quick 6.4 keeps a
/// texture of an icon that changes right before the picture of its window is taken.
extern "C" const char* __lsan_default_suppressions() { // NOLINT
    return "leak:QSGRenderContext::textureForFactory\n";
}

/// Qt is built without frame pointers, so that functions of its own are found in the slower way.
extern "C" const char* __asan_default_options() { // NOLINT
    return "fast_unwind_on_malloc=0";
}
