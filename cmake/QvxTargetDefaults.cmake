# Compiler settings for the project's own targets: strict warnings as errors,
# and __FILE__ relative to the source root so located contract messages read
# "src/common/parser_regex.cpp" wherever the tree was built.
function(qvx_target_defaults target)
  if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Werror
                           -fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=)
  elseif(MSVC)
    target_compile_options(${target} PRIVATE /W4 /WX)
  endif()
endfunction()
