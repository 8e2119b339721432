# What every target of the project shares.

add_library(vornel_flags INTERFACE)
target_compile_features(vornel_flags INTERFACE cxx_std_20)
# Fused multiply-adds would make the bytes of a file depend on the compiler.
target_compile_options(vornel_flags INTERFACE
  -ffp-contract=off -Wall -Wextra -Wpedantic -Werror -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Wno-psabi)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
  # g++ 12 warns of std::string and std::variant code of its own library when it optimises.
  target_compile_options(vornel_flags INTERFACE $<$<CONFIG:Release>:-Wno-restrict -Wno-maybe-uninitialized>)
endif()
target_include_directories(vornel_flags INTERFACE ${PROJECT_SOURCE_DIR})

function(vornel_settings target)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF POSITION_INDEPENDENT_CODE ON
    CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:vornel_flags>)
endfunction()

# A static library of one folder, with explicit sources.
function(vornel_library target)
  add_library(${target} STATIC ${ARGN})
  vornel_settings(${target})
endfunction()

function(vornel_executable target)
  add_executable(${target} ${ARGN})
  vornel_settings(${target})
endfunction()
