// Which families of vector functions are linked. A family is switched on when all its kernels exist; until then its
// rows of records.def make no record, no stub, no declaration and no test.
#ifndef NAX_RUNTIME_FAMILIES_H
#define NAX_RUNTIME_FAMILIES_H

#define NAX_FAMILY_ARITH 1
#define NAX_FAMILY_UTIL 1
#define NAX_FAMILY_EXP 1
#define NAX_FAMILY_LOG 1
#define NAX_FAMILY_TRIG 1
#define NAX_FAMILY_INVTRIG 1
#define NAX_FAMILY_POWER 1
#define NAX_FAMILY_SPECIAL 1
#define NAX_FAMILY_COMPLEX 0

#endif
