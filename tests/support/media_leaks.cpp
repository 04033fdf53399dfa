/// Asked by the leak sanitizer for what is not ours: libx265 3.5 never frees one of the structures
/// that opening an encoder allocates.
extern "C" const char* __lsan_default_suppressions() { // NOLINT
    return "leak:libx265\n";
}
