"""The parity of a sub-code packet: two Reed-Solomon words over GF(64).

Source: Red Book (IEC 60908), sub-code channels R to W. The field is made by x^6 + x + 1; a word is a polynomial whose first
byte is the highest coefficient, and has the roots alpha^0, alpha^1 and so on, as many as it has parity symbols."""

EXP = [1]
while len(EXP) < 63:
    _next = EXP[-1] << 1
    EXP.append(_next ^ 0x43 if _next & 0x40 else _next)
LOG = {value: power for power, value in enumerate(EXP)}
EXP = EXP * 2           # a sum of two logarithms needs no modulo

Q_DATA, Q_PARITY = 2, 2     # bytes 0-1, parity in 2-3
P_DATA, P_PARITY = 20, 4    # bytes 0-19, parity in 20-23


def multiply(a, b):
    return EXP[LOG[a] + LOG[b]] if a and b else 0


def generator(symbols):
    """The coefficients of (x - alpha^0)(x - alpha^1)..., highest first."""
    product = [1]
    for root in range(symbols):
        shifted = product + [0]
        for n, coefficient in enumerate(product):
            shifted[n + 1] ^= multiply(coefficient, EXP[root])
        product = shifted
    return product


def remainder(data, symbols):
    """The parity of `data`: what is left of data * x^symbols after the division by the generator."""
    divisor = generator(symbols)
    rest = list(data) + [0] * symbols
    for n in range(len(data)):
        factor = rest[n]
        for k, coefficient in enumerate(divisor):
            rest[n + k] ^= multiply(factor, coefficient)
    return bytes(rest[len(data):])


def _tables(count, symbols):
    """table[position][symbol]: the share of one symbol in the parity, as a number. The code is linear: shares are XOR-ed."""
    def share(n, symbol):
        return int.from_bytes(remainder(bytes(n) + bytes([symbol]) + bytes(count - 1 - n), symbols), 'big')
    return [[share(n, symbol) for symbol in range(64)] for n in range(count)]


Q_TABLE = _tables(Q_DATA, Q_PARITY)
P_TABLE = _tables(P_DATA, P_PARITY)


def q_parity(command, instruction):
    return (Q_TABLE[0][command] ^ Q_TABLE[1][instruction]).to_bytes(2, 'big')


def p_share(symbols, first=0):
    """The share of the symbols that begin at position `first` in the P parity, as a number of four bytes."""
    share = 0
    for row, symbol in zip(P_TABLE[first:], symbols):
        share ^= row[symbol]
    return share


def syndromes(word, symbols):
    """The word's polynomial at each root, by Horner; all zero if the word is whole."""
    values = []
    for root in range(symbols):
        value = 0
        for symbol in word:
            value = multiply(value, EXP[root]) ^ symbol
        values.append(value)
    return values


def repairable(word, symbols):
    """Tells if at most symbols / 2 wrong symbols inside the word would explain its syndromes; every place is tried."""
    found = syndromes(word, symbols)
    if not any(found):
        return True
    places = [EXP[len(word) - 1 - n] for n in range(len(word))]
    for first in places:
        # One error e at X gives S_k = e X^k.
        if found[0] and all(found[k + 1] == multiply(found[k], first) for k in range(symbols - 1)):
            return True
    if symbols < 4:
        return False
    for n, first in enumerate(places):
        for second in places[:n]:
            # Two errors give S_(k+2) = (X + Y) S_(k+1) + X Y S_k.
            both, product = first ^ second, multiply(first, second)
            if all(found[k + 2] == multiply(both, found[k + 1]) ^ multiply(product, found[k]) for k in (0, 1)):
                return True
    return False
