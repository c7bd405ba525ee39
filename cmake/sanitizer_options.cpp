// For programs with windows that are built with the address sanitizer: Qt's offscreen platform never frees
// its screen. Only whole stacks tell these blocks from our own.

extern "C" {

[[gnu::visibility("default")]] char const* __asan_default_options() { return "fast_unwind_on_malloc=0"; }
[[gnu::visibility("default")]] char const* __lsan_default_options() { return "print_suppressions=0"; }
[[gnu::visibility("default")]] char const* __lsan_default_suppressions() { return "leak:libqoffscreen\n"; }

} // extern "C"
