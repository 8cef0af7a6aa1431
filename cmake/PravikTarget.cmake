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
    if(PRAVIK_SANITIZERS STREQUAL "thread" AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
      # Asio has atomic fences, which the thread sanitizer does not see; what they order is behind locks as well.
      target_compile_options(${target} PRIVATE -Wno-tsan)
    endif()
  endif()
endfunction()
