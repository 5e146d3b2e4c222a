# ZIB_QUICK compiles each folder as one file and reads the toolkit's headers once for all of them: the quickest way to
# a first build. Daily work leaves it off: a compiler cache serves it better, and every file shows what it forgot to
# include. That no two files of a folder share a private name is what lint_joined looks after.
option(ZIB_QUICK "Compile folders as single files over precompiled headers: a quick first build" OFF)

# A precompiled header serves a target only if both know the same macros, so these go to every user of one; the first
# is what SDL wants of its users.
set(ZIB_PRODUCT_MACROS _REENTRANT QT_CORE_LIB QT_GUI_LIB QT_WIDGETS_LIB QT_NO_CAST_FROM_ASCII
    QT_NO_NARROWING_CONVERSIONS_IN_CONNECT)
set(ZIB_TEST_MACROS _REENTRANT QT_CORE_LIB QT_GUI_LIB QT_WIDGETS_LIB)

# Where a header does not serve after all, the file is compiled as ever; that is no reason for a warning.
set(CMAKE_PCH_WARN_INVALID OFF)

# Of two files of a folder, neither hides what the other declares; only the compiler sees them as one.
if(ZIB_QUICK)
    target_compile_options(zib_warnings INTERFACE -Wno-shadow)
endif()

# zib_precompiled(name MACROS macros LIBS targets HEADERS headers)
#   The target whose precompiled headers others take over.
function(zib_precompiled name)
    if(NOT ZIB_QUICK)
        return()
    endif()
    cmake_parse_arguments(arg "" "" "MACROS;LIBS;HEADERS" ${ARGN})
    file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/${name}.cpp CONTENT "")
    add_library(${name} OBJECT ${CMAKE_BINARY_DIR}/${name}.cpp)
    target_compile_definitions(${name} PRIVATE ${arg_MACROS})
    target_link_libraries(${name} PRIVATE zib_warnings ${arg_LIBS})
    # Without this the compiler cache cannot see through the header.
    target_compile_options(${name} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>)
    target_precompile_headers(${name} PRIVATE ${arg_HEADERS})
endfunction()
if(ZIB_QUICK AND CCACHE)
    list(INSERT CMAKE_CXX_COMPILER_LAUNCHER 3 CCACHE_SLOPPINESS=pch_defines,time_macros)
endif()
# What most files include; the whole toolkit would cost more to write and to load than it saves.
set(ZIB_COMMON_HEADERS <QApplication> <QByteArray> <QDialog> <QDir> <QElapsedTimer> <QFile> <QHash> <QKeyEvent>
    <QLabel> <QList> <QLocale> <QPainter> <QPointer> <QRegularExpression> <QSet> <QString> <QThread> <QTimer>
    <algorithm> <atomic> <functional> <memory> <optional> <string> <thread> <vector>)
zib_precompiled(zib_product_headers MACROS ${ZIB_PRODUCT_MACROS} LIBS Qt6::Widgets HEADERS ${ZIB_COMMON_HEADERS})
# The test library's own headers stay out: they know each test's folder.
if(ZIB_TESTS)
    zib_precompiled(zib_test_headers MACROS ${ZIB_TEST_MACROS} LIBS Qt6::Widgets HEADERS ${ZIB_COMMON_HEADERS})
endif()

# zib_folder(name SOURCES ... DEPENDS folders LIBS targets)
#   Makes the static library zib_<name> from this folder ("/" in a name becomes "_").
function(zib_folder name)
    cmake_parse_arguments(arg "" "" "SOURCES;DEPENDS;LIBS" ${ARGN})
    string(REPLACE "/" "_" target "zib_${name}")
    add_library(${target} STATIC ${arg_SOURCES})
    target_include_directories(${target} PUBLIC ${CMAKE_SOURCE_DIR}/src)
    target_compile_definitions(${target} PRIVATE QT_NO_CAST_FROM_ASCII QT_NO_NARROWING_CONVERSIONS_IN_CONNECT)
    set_target_properties(${target} PROPERTIES AUTOMOC ON AUTOUIC ON AUTORCC ON
                          AUTOUIC_OPTIONS "--no-autoconnection")
    target_link_libraries(${target} PUBLIC zib_warnings ${arg_LIBS})
    foreach(folder ${arg_DEPENDS})
        string(REPLACE "/" "_" other ${folder})
        target_link_libraries(${target} PUBLIC zib_${other})
    endforeach()
    if(ZIB_QUICK)
        set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 0)
        target_compile_definitions(${target} PRIVATE ${ZIB_PRODUCT_MACROS})
        target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>)
        target_precompile_headers(${target} REUSE_FROM zib_product_headers)
    endif()
    set_property(GLOBAL APPEND PROPERTY ZIB_FOLDERS "${name}:${arg_DEPENDS}")
endfunction()

# zib_late_library(folder includes...): where the headers of a library lie that the folder loads by itself, unlinked.
function(zib_late_library name)
    string(REPLACE "/" "_" target "zib_${name}")
    target_include_directories(${target} SYSTEM PRIVATE ${ARGN})
endfunction()

# zib_test(name SOURCES ... DEPENDS folders LIBS targets [ENVIRONMENT ...] [LABELS ...] [TIMEOUT seconds])
#   One Qt Test program of its own process, run off screen.
function(zib_test name)
    cmake_parse_arguments(arg "" "TIMEOUT" "SOURCES;DEPENDS;LIBS;ENVIRONMENT;LABELS" ${ARGN})
    if(NOT arg_SOURCES)
        set(arg_SOURCES ${name}.cpp)
    endif()
    if(NOT arg_TIMEOUT)
        set(arg_TIMEOUT 300)
    endif()
    math(EXPR arg_TIMEOUT "${arg_TIMEOUT} * ${ZIB_PATIENCE}")
    add_executable(${name} ${arg_SOURCES})
    target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR}/src ${CMAKE_SOURCE_DIR}/tests)
    target_compile_definitions(${name} PRIVATE ZIB_SOURCE_DIR="${CMAKE_SOURCE_DIR}"
                               ZIB_BINARY_DIR="${CMAKE_BINARY_DIR}")
    set_target_properties(${name} PROPERTIES AUTOMOC ON AUTORCC ON)
    target_link_libraries(${name} PRIVATE zib_warnings Qt6::Test ${arg_LIBS})
    foreach(folder ${arg_DEPENDS})
        string(REPLACE "/" "_" other ${folder})
        target_link_libraries(${name} PRIVATE zib_${other})
    endforeach()
    if(ZIB_QUICK AND arg_DEPENDS)
        target_compile_definitions(${name} PRIVATE ${ZIB_TEST_MACROS})
        target_compile_options(${name} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>)
        target_precompile_headers(${name} REUSE_FROM zib_test_headers)
    endif()
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES TIMEOUT ${arg_TIMEOUT} LABELS "${arg_LABELS}"
                         ENVIRONMENT "QT_QPA_PLATFORM=offscreen;LC_ALL=C.UTF-8;SDL_AUDIODRIVER=dummy;${arg_ENVIRONMENT}")
endfunction()
