# What the project's targets share: flags, the form of a shared library, and the loader's build variants.

set(ZVP_IS_32_BIT OFF)
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  set(ZVP_IS_32_BIT ON)
endif()

set(ZVP_WARNINGS -Wall -Wextra -Wpedantic -Wshadow -Wno-psabi)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  list(APPEND ZVP_WARNINGS -Wno-maybe-uninitialized -Wno-uninitialized) # GCC 12 sees its own AVX-512 intrinsics as uninitialised
endif()

# Results are defined to the last bit: no fused multiply-add, no reassociation. What is given up (errno, floating-point
# traps) no result depends on.
set(ZVP_CODE_FLAGS -ffp-contract=off -fno-math-errno -fno-trapping-math)
if(ZVP_IS_32_BIT)
  list(APPEND ZVP_CODE_FLAGS -msse2 -mfpmath=sse -mstackrealign) # callers may keep the stack on 4 bytes only
endif()

set(ZVP_BASELINE_FLAGS -mavx)
set(ZVP_VARIANT_FLAGS_x86-64-v3 -march=x86-64-v3)
set(ZVP_VARIANT_FLAGS_x86-64-v4 -march=x86-64-v4 -mprefer-vector-width=512)

# The form of both shared libraries: hidden symbols, one version node, soname by major version, no C++ runtime; calls of
# their own exports stay inside.
function(zvp_shared_library target version_script)
  target_compile_features(${target} PRIVATE cxx_std_20)
  target_compile_options(${target} PRIVATE ${ZVP_WARNINGS} ${ZVP_CODE_FLAGS} $<$<CONFIG:Release>:-O3> -fno-exceptions
                                           -fno-rtti -fno-threadsafe-statics)
  set_target_properties(
    ${target}
    PROPERTIES CXX_EXTENSIONS OFF
               CXX_VISIBILITY_PRESET hidden
               VISIBILITY_INLINES_HIDDEN ON
               VERSION ${PROJECT_VERSION}
               SOVERSION ${PROJECT_VERSION_MAJOR}
               LINKER_LANGUAGE C
               LINK_DEPENDS ${version_script})
  # Its calls of itself bind inside it; all others when it is loaded, so that none writes to its own memory.
  target_link_options(${target} PRIVATE -Wl,--version-script=${version_script} -Wl,--as-needed
                                            -Wl,-Bsymbolic-functions -Wl,-z,relro -Wl,-z,now)
  if(NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")
    target_link_options(${target} PRIVATE -Wl,-z,defs)
  endif()
endfunction()
