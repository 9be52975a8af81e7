# Installed: orvistrand::core and what stands on it, with what these need in turn.
include(CMakeFindDependencyMacro)
find_dependency(Threads)
find_dependency(absl)
find_dependency(Qt5 5.15 COMPONENTS Widgets)
include("${CMAKE_CURRENT_LIST_DIR}/OrvistrandTargets.cmake")
