#!/usr/bin/env python3
"""Parameter rows of the WH generators: python3 tools/gen/wh_rows.py > rng/generators/wh273.inc

A row is four primes below 2^24 with four multipliers. What it must satisfy:
  - the moduli are distinct primes, no two rows share one, so that the 273 generators have no common component;
  - every (m - 1)/2 is coprime to the others of its row: then the row's period, the least common multiple of the four
    m - 1, is their product over 8, about 2^93;
  - the multiplier of a modulus is a primitive root modulo it, so that the component runs through all m - 1 values;
  - a m < 2^31, so that one step's product is exact in doubles and fits a signed 32-bit word.

Method. Primes are taken downward from 2^24. The first prime that is left opens a row, and the row takes the next ones
whose (m - 1)/2 is coprime to those that it has; primes passed over stay for later rows. Multipliers are the primitive
roots among 127, 126, 125, ..., one each, different within the row. Rows 0, 1, 2 and 272 are published constants of the
family and are kept as they stand; their primes are reserved.
"""
import math
import sys

ROWS = 273
FIXED = {
    0: ((125, 117, 127, 126), (16770647, 16770643, 16770623, 16770617)),
    1: ((127, 126, 125, 123), (16770311, 16770283, 16770263, 16770209)),
    2: ((125, 119, 123, 126), (16769807, 16769771, 16769749, 16769663)),
    272: ((126, 127, 125, 124), (16766363, 16766359, 16766327, 16766231)),
}


def primes_downward(limit, count):
    sieve = bytearray([1]) * 65536
    small = []
    for p in range(2, 65536):
        if sieve[p]:
            small.append(p)
            sieve[p * p::p] = bytes(len(range(p * p, 65536, p)))
    n = limit - 1
    while count > 0:
        root = math.isqrt(n)
        if all(n % p for p in small if p <= root):
            yield n
            count -= 1
        n -= 1


def prime_factors(n):
    factors = []
    p = 2
    while p * p <= n:
        if n % p == 0:
            factors.append(p)
            while n % p == 0:
                n //= p
        p += 1
    return factors + [n] if n > 1 else factors


def is_primitive_root(a, m):
    return all(pow(a, (m - 1) // f, m) != 1 for f in prime_factors(m - 1))


def multipliers(moduli):
    chosen = []
    for m in moduli:
        chosen.append(next(a for a in range(127, 1, -1)
                           if a not in chosen and a * m < 2 ** 31 and is_primitive_root(a, m)))
    return tuple(chosen)


def search():
    reserved = {m for _, moduli in FIXED.values() for m in moduli}
    pool = [p for p in primes_downward(2 ** 24, 4000) if p not in reserved]
    rows = []
    for index in range(ROWS):
        if index in FIXED:
            rows.append(FIXED[index])
            continue
        row = [pool.pop(0)]
        for p in list(pool):
            if all(math.gcd((p - 1) // 2, (q - 1) // 2) == 1 for q in row):
                row.append(p)
                pool.remove(p)
                if len(row) == 4:
                    break
        rows.append((multipliers(row), tuple(row)))
    return rows


def main():
    print("// Made by tools/gen/wh_rows.py, which tells the method and what a row satisfies.")
    print("// Multipliers a1..a4, moduli m1..m4 of one generator to a line.")
    for a, m in search():
        print("WH_ROW(%s, %s)" % (", ".join(map(str, a)), ", ".join(map(str, m))))


if __name__ == "__main__":
    sys.exit(main())
