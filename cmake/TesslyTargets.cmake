# What every target of the project is built with, and the one way to make a target.

add_library(tessly_options INTERFACE)
target_compile_features(tessly_options INTERFACE cxx_std_20)
target_compile_options(tessly_options INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion
    $<$<BOOL:${TESSLY_WARNINGS_AS_ERRORS}>:-Werror>)
target_compile_definitions(tessly_options INTERFACE
    QT_NO_CAST_FROM_ASCII
    QT_NO_CAST_TO_ASCII
    QT_NO_CAST_FROM_BYTEARRAY
    QT_NO_FOREACH
    QT_NO_KEYWORDS
    QT_NO_URL_CAST_FROM_STRING
    QT_NO_NARROWING_CONVERSIONS_IN_CONNECT
    QT_STRICT_ITERATORS
    QT_DISABLE_DEPRECATED_BEFORE=0x060400)
if(TESSLY_SANITIZE)
    # Instrumentation leads g++ to take moved std::optional values for uninitialized ones.
    target_compile_options(tessly_options INTERFACE
        -fsanitize=${TESSLY_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=undefined
        $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
    target_link_options(tessly_options INTERFACE -fsanitize=${TESSLY_SANITIZE})
endif()

# Parsing the libraries' headers is half of what compiling a file costs, so those that most files
# include are parsed once for the product, with its lowest floor, and once for the tests. A file
# includes what it uses all the same: script/lint goes without.
set(TESSLY_PRECOMPILED_HEADERS
    <QByteArray> <QCoroFuture> <QCoroTask> <QFile> <QFileInfo> <QHash> <QLoggingCategory> <QObject>
    <QPointer> <QString> <QStringList> <QVariantMap>
    <algorithm> <array> <atomic> <chrono> <functional> <map> <memory> <mutex> <optional> <ranges>
    <string> <thread> <utility> <vector>)

if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    # The standard library of g++ 12 itself uses what it calls deprecated.
    target_compile_options(tessly_options INTERFACE -Wno-deprecated-declarations)
endif()
if(Qt6_VERSION VERSION_GREATER_EQUAL 6.5)
    # Newer ones of Qt's libraries bring it to whoever links them; who takes precompiled headers must
    # be compiled as they were.
    target_compile_options(tessly_options INTERFACE -pthread)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # Without it ccache passes on every file that takes them.
    target_compile_options(tessly_options INTERFACE -fpch-preprocess)
    if(CMAKE_CXX_COMPILER_VERSION VERSION_GREATER_EQUAL 13)
        # From then on it takes the members of a moved std::variant for uninitialized ones; g++ 12
        # keeps an eye on the others.
        target_compile_options(tessly_options INTERFACE -Wno-maybe-uninitialized)
    endif()
endif()

# tessly_add_room(name SOURCES ... DEPENDS ... [PRIVATE_DEPENDS ...] [PRECOMPILES headers ...])
#
# One folder, one static library. A folder's headers are visible only to the targets that link it,
# so that an include that points upwards does not compile. The room that precompiles headers does so
# for all others.
function(tessly_add_room name)
    cmake_parse_arguments(PARSE_ARGV 1 ROOM "" "" "SOURCES;DEPENDS;PRIVATE_DEPENDS;PRECOMPILES")
    add_library(${name} STATIC ${ROOM_SOURCES})
    target_include_directories(${name} PUBLIC "${CMAKE_CURRENT_SOURCE_DIR}")
    target_link_libraries(${name}
        PUBLIC ${ROOM_DEPENDS}
        PRIVATE tessly_options ${ROOM_PRIVATE_DEPENDS})
    if(ROOM_PRECOMPILES)
        target_precompile_headers(${name} PRIVATE ${ROOM_PRECOMPILES})
    else()
        target_precompile_headers(${name} REUSE_FROM tessly_support)
    endif()
endfunction()
