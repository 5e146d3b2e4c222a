# zib_drive_test(name ...)
#   A zib_test that runs with the emulated recorder under it; takes the arguments of zib_test.
#   The test makes a zib::EmulatedRecorder ("EmulatedRecorder.h"), and /dev/sr0 exists.
function(zib_drive_test name)
    cmake_parse_arguments(arg "" "TIMEOUT" "SOURCES;DEPENDS;LIBS;ENVIRONMENT;LABELS" ${ARGN})
    zib_test(${name} SOURCES ${arg_SOURCES} DEPENDS ${arg_DEPENDS} LIBS zib_emulated_recorder ${arg_LIBS}
             TIMEOUT ${arg_TIMEOUT} LABELS drive ${arg_LABELS}
             ENVIRONMENT "LD_PRELOAD=$<TARGET_FILE:zib_emulated_drive>" "ASAN_OPTIONS=verify_asan_link_order=0"
                         ${arg_ENVIRONMENT})
    add_dependencies(${name} zib_emulated_drive)
endfunction()
