# Compiler settings that every target of this project shares.

# Source files by folder: a new file is built without a change here or there.
function(pravik_sources out)
  file(GLOB_RECURSE found CONFIGURE_DEPENDS *.cpp *.h)
  set(${out} ${found} PARENT_SCOPE)
endfunction()

function(pravik_target target)
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
