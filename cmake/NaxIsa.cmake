# Instruction set of a source file, told by where it stands and by its suffix:
#   *_scalar.cpp  baseline x86-64 (128-bit registers)      *_avx.cpp   AVX without AVX2 and FMA
#   *_avx2.cpp    AVX2 and FMA                             *_avx512.cpp and everything else under vmath/  AVX-512
#   *_simd.cpp    AVX-512, or AVX2 when NAX_SIMD is avx2: wide loops of streams, fitting and primitives, written on
#                 compiler vectors so that both exist
#   the rest      AVX2 and FMA: scalar control code
set(NAX_FLAGS_AVX512 -march=x86-64-v4 -mprefer-vector-width=512 -mvaes -maes -mvpclmulqdq -mpclmul -mrdrnd)
set(NAX_FLAGS_AVX2 -march=x86-64-v3 -maes -mvaes -mpclmul -mvpclmulqdq -mrdrnd)
set(NAX_FLAGS_AVX -march=x86-64 -mavx)
set(NAX_FLAGS_SCALAR -march=x86-64)
if(NAX_SIMD STREQUAL "avx2")
  set(NAX_FLAGS_SIMD ${NAX_FLAGS_AVX2})
else()
  set(NAX_FLAGS_SIMD ${NAX_FLAGS_AVX512})
endif()

function(nax_set_isa_flags)
  foreach(file ${ARGV})
    if(file MATCHES "_scalar\\.cpp$")
      set(flags ${NAX_FLAGS_SCALAR})
    elseif(file MATCHES "_avx\\.cpp$")
      set(flags ${NAX_FLAGS_AVX})
    elseif(file MATCHES "_avx2\\.cpp$")
      set(flags ${NAX_FLAGS_AVX2})
    elseif(file MATCHES "_simd\\.cpp$")
      set(flags ${NAX_FLAGS_SIMD})
    elseif(file MATCHES "_avx512\\.cpp$")
      set(flags ${NAX_FLAGS_AVX512})
    elseif(file MATCHES "/vmath/" AND NOT file MATCHES "_rare\\.cpp$")
      set(flags ${NAX_FLAGS_AVX512})
    else()
      set(flags ${NAX_FLAGS_AVX2})
    endif()
    set_property(SOURCE ${file} APPEND PROPERTY COMPILE_OPTIONS ${flags})
  endforeach()
endfunction()
