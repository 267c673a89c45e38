// The number by which the layer above tells this library's processor level from that of its siblings.
extern "C" int dll_cpu_version() { return 9; }
