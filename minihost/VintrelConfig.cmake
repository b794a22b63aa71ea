# Vintrel::effect is the effect, Vintrel::minihost the host that renders with it, both static libraries;
# Vintrel::hostapi is the language between them, headers alone, for hosts of one's own.
include(CMakeFindDependencyMacro)
find_dependency(Threads)
include(${CMAKE_CURRENT_LIST_DIR}/VintrelTargets.cmake)
