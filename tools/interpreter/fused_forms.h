// The fused multiply-add instructions, one struct per form: a is the destination, b and c the sources as encoded. The
// form is spelled because it decides which of several NaNs comes out.
#pragma once

#include <immintrin.h>

namespace nax::emulator {

struct AddSub132 {
    __m256d operator()(__m256d a, __m256d b, __m256d c) const { asm("vfmaddsub132pd %2,%1,%0" : "+x"(a) : "x"(b), "x"(c)); return a; }
    __m256 operator()(__m256 a, __m256 b, __m256 c) const { asm("vfmaddsub132ps %2,%1,%0" : "+x"(a) : "x"(b), "x"(c)); return a; }
};
struct SubAdd132 {
    __m256d operator()(__m256d a, __m256d b, __m256d c) const { asm("vfmsubadd132pd %2,%1,%0" : "+x"(a) : "x"(b), "x"(c)); return a; }
    __m256 operator()(__m256 a, __m256 b, __m256 c) const { asm("vfmsubadd132ps %2,%1,%0" : "+x"(a) : "x"(b), "x"(c)); return a; }
};
struct Add132 {
    __m256d operator()(__m256d a, __m256d b, __m256d c) const { asm("vfmadd132pd %2,%1,%0" : "+x"(a) : "x"(b), "x"(c)); return a; }
    __m256 operator()(__m256 a, __m256 b, __m256 c) const { asm("vfmadd132ps %2,%1,%0" : "+x"(a) : "x"(b), "x"(c)); return a; }
};
struct Sub132 {
    __m256d operator()(__m256d a, __m256d b, __m256d c) const { asm("vfmsub132pd %2,%1,%0" : "+x"(a) : "x"(b), "x"(c)); return a; }
    __m256 operator()(__m256 a, __m256 b, __m256 c) const { asm("vfmsub132ps %2,%1,%0" : "+x"(a) : "x"(b), "x"(c)); return a; }
};
struct NegativeAdd132 {
    __m256d operator()(__m256d a, __m256d b, __m256d c) const { asm("vfnmadd132pd %2,%1,%0" : "+x"(a) : "x"(b), "x"(c)); return a; }
    __m256 operator()(__m256 a, __m256 b, __m256 c) const { asm("vfnmadd132ps %2,%1,%0" : "+x"(a) : "x"(b), "x"(c)); return a; }
};
struct NegativeSub132 {
    __m256d operator()(__m256d a, __m256d b, __m256d c) const { asm("vfnmsub132pd %2,%1,%0" : "+x"(a) : "x"(b), "x"(c)); return a; }
    __m256 operator()(__m256 a, __m256 b, __m256 c) const { asm("vfnmsub132ps %2,%1,%0" : "+x"(a) : "x"(b), "x"(c)); return a; }
};
struct AddSub213 {
    __m256d operator()(__m256d a, __m256d b, __m256d c) const { asm("vfmaddsub213pd %2,%1,%0" : "+x"(a) : "x"(b), "x"(c)); return a; }
    __m256 operator()(__m256 a, __m256 b, __m256 c) const { asm("vfmaddsub213ps %2,%1,%0" : "+x"(a) : "x"(b), "x"(c)); return a; }
};
struct SubAdd213 {
    __m256d operator()(__m256d a, __m256d b, __m256d c) const { asm("vfmsubadd213pd %2,%1,%0" : "+x"(a) : "x"(b), "x"(c)); return a; }
    __m256 operator()(__m256 a, __m256 b, __m256 c) const { asm("vfmsubadd213ps %2,%1,%0" : "+x"(a) : "x"(b), "x"(c)); return a; }
};
struct Add213 {
    __m256d operator()(__m256d a, __m256d b, __m256d c) const { asm("vfmadd213pd %2,%1,%0" : "+x"(a) : "x"(b), "x"(c)); return a; }
    __m256 operator()(__m256 a, __m256 b, __m256 c) const { asm("vfmadd213ps %2,%1,%0" : "+x"(a) : "x"(b), "x"(c)); return a; }
};
struct Sub213 {
    __m256d operator()(__m256d a, __m256d b, __m256d c) const { asm("vfmsub213pd %2,%1,%0" : "+x"(a) : "x"(b), "x"(c)); return a; }
    __m256 operator()(__m256 a, __m256 b, __m256 c) const { asm("vfmsub213ps %2,%1,%0" : "+x"(a) : "x"(b), "x"(c)); return a; }
};
struct NegativeAdd213 {
    __m256d operator()(__m256d a, __m256d b, __m256d c) const { asm("vfnmadd213pd %2,%1,%0" : "+x"(a) : "x"(b), "x"(c)); return a; }
    __m256 operator()(__m256 a, __m256 b, __m256 c) const { asm("vfnmadd213ps %2,%1,%0" : "+x"(a) : "x"(b), "x"(c)); return a; }
};
struct NegativeSub213 {
    __m256d operator()(__m256d a, __m256d b, __m256d c) const { asm("vfnmsub213pd %2,%1,%0" : "+x"(a) : "x"(b), "x"(c)); return a; }
    __m256 operator()(__m256 a, __m256 b, __m256 c) const { asm("vfnmsub213ps %2,%1,%0" : "+x"(a) : "x"(b), "x"(c)); return a; }
};
struct AddSub231 {
    __m256d operator()(__m256d a, __m256d b, __m256d c) const { asm("vfmaddsub231pd %2,%1,%0" : "+x"(a) : "x"(b), "x"(c)); return a; }
    __m256 operator()(__m256 a, __m256 b, __m256 c) const { asm("vfmaddsub231ps %2,%1,%0" : "+x"(a) : "x"(b), "x"(c)); return a; }
};
struct SubAdd231 {
    __m256d operator()(__m256d a, __m256d b, __m256d c) const { asm("vfmsubadd231pd %2,%1,%0" : "+x"(a) : "x"(b), "x"(c)); return a; }
    __m256 operator()(__m256 a, __m256 b, __m256 c) const { asm("vfmsubadd231ps %2,%1,%0" : "+x"(a) : "x"(b), "x"(c)); return a; }
};
struct Add231 {
    __m256d operator()(__m256d a, __m256d b, __m256d c) const { asm("vfmadd231pd %2,%1,%0" : "+x"(a) : "x"(b), "x"(c)); return a; }
    __m256 operator()(__m256 a, __m256 b, __m256 c) const { asm("vfmadd231ps %2,%1,%0" : "+x"(a) : "x"(b), "x"(c)); return a; }
};
struct Sub231 {
    __m256d operator()(__m256d a, __m256d b, __m256d c) const { asm("vfmsub231pd %2,%1,%0" : "+x"(a) : "x"(b), "x"(c)); return a; }
    __m256 operator()(__m256 a, __m256 b, __m256 c) const { asm("vfmsub231ps %2,%1,%0" : "+x"(a) : "x"(b), "x"(c)); return a; }
};
struct NegativeAdd231 {
    __m256d operator()(__m256d a, __m256d b, __m256d c) const { asm("vfnmadd231pd %2,%1,%0" : "+x"(a) : "x"(b), "x"(c)); return a; }
    __m256 operator()(__m256 a, __m256 b, __m256 c) const { asm("vfnmadd231ps %2,%1,%0" : "+x"(a) : "x"(b), "x"(c)); return a; }
};
struct NegativeSub231 {
    __m256d operator()(__m256d a, __m256d b, __m256d c) const { asm("vfnmsub231pd %2,%1,%0" : "+x"(a) : "x"(b), "x"(c)); return a; }
    __m256 operator()(__m256 a, __m256 b, __m256 c) const { asm("vfnmsub231ps %2,%1,%0" : "+x"(a) : "x"(b), "x"(c)); return a; }
};

}  // namespace nax::emulator
