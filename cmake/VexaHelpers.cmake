# Shared settings for every library and program of the project.

# The sanitizer build (scripts/test.sh --only sanitize): every target, tests, examples and the
# viewer included, is instrumented, since a fault found in a program's own code or a header
# inlined there is found only when that code carries the checks too. Undefined behaviour ends
# the program instead of printing and carrying on, so that a test cannot pass over it.
set(VEXA_SANITIZE_FLAGS -fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
if(VEXA_SANITIZE)
  if(NOT CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
    message(FATAL_ERROR "VEXA_SANITIZE needs clang or GCC")
  endif()
  add_compile_options(${VEXA_SANITIZE_FLAGS})
  add_link_options(-fsanitize=address,undefined)
  # A program outside the tree linking these libraries needs the same runtime (the install check).
  list(JOIN VEXA_SANITIZE_FLAGS " " VEXA_CONSUMER_CXX_FLAGS)
else()
  set(VEXA_CONSUMER_CXX_FLAGS "")
endif()

# Warnings apply to our own targets only; third-party headers come in as system includes.
function(vexa_set_warnings target)
  if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow
      -Wnon-virtual-dtor -Wcast-align -Woverloaded-virtual -Wnull-dereference)
    # GCC 12 and 13 with optimisation take std::string's own insert at the front (as in
    # "(" + text) for an overlapping copy and warn inside the standard library, wherever that
    # operator is inlined: in Release builds a dozen files of ours, readers, panels and tests
    # alike. The warning says nothing about our code there; other compilers keep it.
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_GREATER_EQUAL 12
       AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 14)
      target_compile_options(${target} PRIVATE -Wno-restrict)
    endif()
    if(VEXA_WERROR)
      target_compile_options(${target} PRIVATE -Werror)
    endif()
  elseif(MSVC)
    target_compile_options(${target} PRIVATE /W4 /permissive-)
    if(VEXA_WERROR)
      target_compile_options(${target} PRIVATE /WX)
    endif()
  endif()
endfunction()

# A companion library: libs/<name>/include is its public interface, src/ its code.
# Usage: vexa_add_library(NAME name SOURCES ... PUBLIC_DEPS ... PRIVATE_DEPS ...)
function(vexa_add_library)
  cmake_parse_arguments(ARG "" "NAME;EXPORT_NAME" "SOURCES;PUBLIC_DEPS;PRIVATE_DEPS" ${ARGN})
  add_library(${ARG_NAME} SHARED ${ARG_SOURCES})
  if(NOT ARG_EXPORT_NAME)
    set(ARG_EXPORT_NAME ${ARG_NAME})
  endif()
  add_library(vexa::${ARG_EXPORT_NAME} ALIAS ${ARG_NAME})
  set_target_properties(${ARG_NAME} PROPERTIES
    EXPORT_NAME ${ARG_EXPORT_NAME}
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
  target_include_directories(${ARG_NAME} PUBLIC
    $<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}/include>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  target_compile_features(${ARG_NAME} PUBLIC cxx_std_20)
  target_link_libraries(${ARG_NAME} PUBLIC ${ARG_PUBLIC_DEPS} PRIVATE ${ARG_PRIVATE_DEPS})
  vexa_set_warnings(${ARG_NAME})
  install(TARGETS ${ARG_NAME} EXPORT vexaTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
endfunction()
