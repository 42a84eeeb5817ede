include(${CMAKE_CURRENT_LIST_DIR}/Arrows.cmake)
include(${CMAKE_CURRENT_LIST_DIR}/Hardening.cmake)

# Flags every target of this project is built with. -ffp-contract=off: the order of operations of gridding,
# transforms and CLEAN is part of their contract, and a fused multiply-add would change the bits.
add_library(lumo_flags INTERFACE)
target_compile_features(lumo_flags INTERFACE cxx_std_20)
target_compile_options(lumo_flags INTERFACE -ffp-contract=off -Wall -Wextra -Wpedantic -Wshadow
    -Wnon-virtual-dtor -Woverloaded-virtual $<$<BOOL:${LUMO_WERROR}>:-Werror>)
lumo_harden(lumo_flags)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # GCC 12 sees overlapping copies in std::string concatenation that are not there ...
  target_compile_options(lumo_flags INTERFACE -Wno-restrict)
  if(LUMO_SANITIZE)
    # ... and uninitialised values in its own sanitizer instrumentation.
    target_compile_options(lumo_flags INTERFACE -Wno-maybe-uninitialized)
  endif()
endif()

# lumo_room(NAME SOURCES file... [DEPENDS room...] [PACKAGES target...] [PRIVATE_PACKAGES target...])
#
# Makes the static library lumo_NAME (alias lumo::NAME) from the sources of src/NAME. Each room has an include
# root of its own, <build>/roots/NAME, which holds one link NAME -> src/NAME. So "core/AMatrix.h" is found only
# by targets whose link line leads to lumo::core, and an include against the arrows does not compile.
function(lumo_room name)
  cmake_parse_arguments(ROOM "" "" "SOURCES;DEPENDS;PACKAGES;PRIVATE_PACKAGES" ${ARGN})
  foreach(below IN LISTS ROOM_DEPENDS)
    if(NOT below IN_LIST LUMO_ARROWS_${name})
      message(FATAL_ERROR "lumo_room(${name}): an arrow to '${below}' is not in cmake/Arrows.cmake")
    endif()
  endforeach()
  set(root ${CMAKE_BINARY_DIR}/roots/${name})
  file(MAKE_DIRECTORY ${root})
  file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR} ${root}/${name} SYMBOLIC)
  add_library(lumo_${name} STATIC ${ROOM_SOURCES})
  add_library(lumo::${name} ALIAS lumo_${name})
  target_include_directories(lumo_${name} PUBLIC ${root})
  list(TRANSFORM ROOM_DEPENDS PREPEND lumo::)
  target_link_libraries(lumo_${name} PUBLIC lumo_flags ${ROOM_DEPENDS} ${ROOM_PACKAGES}
      PRIVATE ${ROOM_PRIVATE_PACKAGES})
endfunction()

# lumo_ui_room(NAME SOURCES file... [DEPENDS target...])
#
# The windows of room NAME: library lumo_NAME_ui (alias lumo::NAME_ui) from src/NAME/ui, which sees its room and the
# window library. Its headers are "NAME/ui/File.h".
function(lumo_ui_room name)
  cmake_parse_arguments(UI "" "" "SOURCES" ${ARGN})
  add_library(lumo_${name}_ui STATIC ${UI_SOURCES})
  add_library(lumo::${name}_ui ALIAS lumo_${name}_ui)
  set_target_properties(lumo_${name}_ui PROPERTIES AUTOMOC ON)
  target_link_libraries(lumo_${name}_ui PUBLIC lumo::${name} lumo::view)
endfunction()

# lumo_tests(NAME SOURCES file... LINKS target...): the test program of one room, its cases registered one by one.
function(lumo_tests name)
  cmake_parse_arguments(T "" "" "SOURCES;LINKS;LABELS" ${ARGN})
  if(NOT T_LABELS)
    set(T_LABELS unit)
  endif()
  add_executable(lumo_${name}_tests ${T_SOURCES})
  target_link_libraries(lumo_${name}_tests PRIVATE ${T_LINKS} lumo_test_support GTest::gmock GTest::gtest_main)
  gtest_discover_tests(lumo_${name}_tests TEST_PREFIX "${name}." DISCOVERY_TIMEOUT 60
      PROPERTIES LABELS "${T_LABELS}" TIMEOUT 600)
endfunction()

# lumo_bench(NAME SOURCES file... LINKS target...): one Google Benchmark program.
function(lumo_bench name)
  cmake_parse_arguments(B "" "" "SOURCES;LINKS" ${ARGN})
  add_executable(lumo_${name}_bench ${B_SOURCES})
  target_link_libraries(lumo_${name}_bench PRIVATE ${B_LINKS} benchmark::benchmark_main)
endfunction()
