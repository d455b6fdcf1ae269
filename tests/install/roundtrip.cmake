# Installs the built project into a scratch prefix, then builds and runs the
# C++ example on its own against it with find_package(qvx-parser).
# Variables: BUILD_DIR, SOURCE_DIR, PREFIX, CXX_COMPILER, CXX_FLAGS, GENERATOR.
file(REMOVE_RECURSE "${PREFIX}" "${PREFIX}-consumer")
execute_process(COMMAND ${CMAKE_COMMAND} --install "${BUILD_DIR}" --prefix "${PREFIX}"
                RESULT_VARIABLE rc OUTPUT_QUIET)
if(rc)
  message(FATAL_ERROR "install failed: ${rc}")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} -S "${SOURCE_DIR}/examples/cpp" -B "${PREFIX}-consumer"
                -G "${GENERATOR}" "-DCMAKE_PREFIX_PATH=${PREFIX}"
                "-DCMAKE_CXX_COMPILER=${CXX_COMPILER}" "-DCMAKE_CXX_FLAGS=${CXX_FLAGS}"
                RESULT_VARIABLE rc)
if(rc)
  message(FATAL_ERROR "configuring the consumer failed: ${rc}")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} --build "${PREFIX}-consumer" RESULT_VARIABLE rc)
if(rc)
  message(FATAL_ERROR "building the consumer failed: ${rc}")
endif()
execute_process(COMMAND "${PREFIX}-consumer/qvx-example-parse-vin" "1HGCM82633A004352"
                RESULT_VARIABLE rc OUTPUT_VARIABLE out)
if(rc OR NOT out MATCHES "WMI = ")
  message(FATAL_ERROR "the consumer did not parse: ${rc}\n${out}")
endif()
