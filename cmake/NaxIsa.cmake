# Instruction set of a source file, told by where it stands and by its suffix:
#   *_scalar.cpp  baseline x86-64 (128-bit registers)      *_avx.cpp   AVX without AVX2 and FMA
#   *_avx2.cpp    AVX2 and FMA                             *_simd.cpp and everything else under vmath/ but *_rare.cpp:
#                 both flavours, AVX2 for libnax.so and AVX-512 for its copy in glibc-hwcaps/x86-64-v4
#   the rest      AVX2 and FMA: scalar control code
# Files of both flavours are compiled twice, all others once for both libraries.
set(NAX_FLAGS_AVX512 -march=x86-64-v4 -mprefer-vector-width=512 -mvaes -maes -mvpclmulqdq -mpclmul -mrdrnd)
set(NAX_FLAGS_AVX2 -march=x86-64-v3 -maes -mvaes -mpclmul -mvpclmulqdq -mrdrnd)
set(NAX_FLAGS_AVX -march=x86-64 -mavx)
set(NAX_FLAGS_SCALAR -march=x86-64)
set(NAX_FLAVOURED "_simd\\.cpp$")
set(NAX_FIXED "_(scalar|avx|avx2|rare)\\.cpp$")

# Splits sources into those of both flavours and the rest, which gets its flags.
function(nax_split_by_isa flavoured_name fixed_name)
  set(flavoured)
  set(fixed)
  foreach(file ${ARGN})
    if(file MATCHES ${NAX_FLAVOURED} OR (file MATCHES "/vmath/.*\\.cpp$" AND NOT file MATCHES ${NAX_FIXED}))
      list(APPEND flavoured ${file})
      continue()
    endif()
    list(APPEND fixed ${file})
    if(NOT file MATCHES "\\.cpp$")
      continue()
    elseif(file MATCHES "_scalar\\.cpp$")
      set(flags ${NAX_FLAGS_SCALAR})
    elseif(file MATCHES "_avx\\.cpp$")
      set(flags ${NAX_FLAGS_AVX})
    else()
      set(flags ${NAX_FLAGS_AVX2})
    endif()
    set_property(SOURCE ${file} APPEND PROPERTY COMPILE_OPTIONS ${flags})
  endforeach()
  set(${flavoured_name} ${flavoured} PARENT_SCOPE)
  set(${fixed_name} ${fixed} PARENT_SCOPE)
endfunction()
