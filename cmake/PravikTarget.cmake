# Compiler settings that every target of this project shares.

# Source files by folder: a new file is built without a change here or there.
function(pravik_sources out)
  file(GLOB_RECURSE found CONFIGURE_DEPENDS *.cpp *.h)
  set(${out} ${found} PARENT_SCOPE)
endfunction()

# Headers of the system and of other libraries, compiled once for all targets that are compiled with the same
# definitions: most of the time of a build goes into reading them. pravik_precompile(TARGET HEADERS...) makes them with a
# target, pravik_reuse_headers(TARGET OWNER) takes them from another. Clang wants more settings to be the same.
function(pravik_precompile target)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_precompile_headers(${target} PRIVATE ${ARGN})
  endif()
endfunction()

function(pravik_reuse_headers target owner)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_precompile_headers(${target} REUSE_FROM ${owner})
  endif()
endfunction()

# Code that waits for people, files and the libraries below it, or runs once: optimised less, so that it builds quickly.
function(pravik_optimise_less target)
  target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-O1>)
endfunction()

function(pravik_target target)
  get_target_property(type ${target} TYPE)
  if(type STREQUAL "EXECUTABLE")
    # Like a library, whose compiled headers it may then reuse.
    set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE OFF)
    target_compile_options(${target} PRIVATE -fPIC)
  endif()
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow
                                           -fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=)
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR})
  if(PRAVIK_SANITIZERS)
    target_compile_options(${target} PRIVATE -fsanitize=${PRAVIK_SANITIZERS} -fno-omit-frame-pointer
                                             -fno-sanitize-recover=all)
    target_link_options(${target} PRIVATE -fsanitize=${PRAVIK_SANITIZERS})
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
      # What GCC says of Asio in instrumented builds only: it sees one half of the allocation of coroutine frames
      # inlined and the other not; and the thread sanitizer does not know fences (what they order is locked as well).
      target_compile_options(${target} PRIVATE -Wno-mismatched-new-delete -Wno-tsan)
    endif()
  endif()
endfunction()
