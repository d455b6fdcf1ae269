# nlohmann JSON for an emscripten build. The toolchain's find root is its own
# sysroot, which hides Debian's package config, and adding /usr/include
# would pull the host's C headers in; so only the header tree is linked into
# the build and offered as the usual target.
find_path(QVX_NLOHMANN_DIR nlohmann/json.hpp PATHS /usr/include NO_CMAKE_FIND_ROOT_PATH REQUIRED)
file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/json_include)
file(CREATE_LINK ${QVX_NLOHMANN_DIR}/nlohmann ${PROJECT_BINARY_DIR}/json_include/nlohmann SYMBOLIC)
add_library(nlohmann_json INTERFACE)
target_include_directories(nlohmann_json SYSTEM INTERFACE
  $<BUILD_INTERFACE:${PROJECT_BINARY_DIR}/json_include>)
add_library(nlohmann_json::nlohmann_json ALIAS nlohmann_json)
