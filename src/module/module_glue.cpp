// Load and unload glue of libtavro.so. The plug-in needs nothing at load
// time: setup creates all module state and teardown releases it. Unloading
// while a camera is attached is the host's error; the destructors of the
// module's statics still end every worker thread before the code goes away.
namespace tavro::module {
[[maybe_unused]] constexpr const char* kModuleName = "tavro";
}  // namespace tavro::module
