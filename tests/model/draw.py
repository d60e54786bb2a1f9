"""What both the random requests and the random cameras are made of."""
import functools

PRINTABLE = bytes(range(32, 127))
ANY = bytes(range(1, 256))
HEXADECIMAL = b"0123456789abcdefABCDEF"
TRICKY = b"\"'`\\$;&|<>(){}[]#=%! \t\r\n\x01\x7f\x80\xff"
ALPHABETS = (PRINTABLE, PRINTABLE, ANY, HEXADECIMAL, TRICKY)


@functools.cache
def table(alphabet):
    """Makes bytes into letters of the alphabet."""
    return bytes(alphabet[byte % len(alphabet)] for byte in range(256))


def often(random, probability):
    return random.random() < probability


def text(random, lengths, alphabet=None):
    """Without NULs; of one of `lengths`, or of any length up to the longest."""
    length = random.choice(lengths) if often(random, 0.6) else random.randint(0, max(lengths))
    return random.randbytes(length).translate(table(alphabet or random.choice(ALPHABETS)))


def number(random, usual, unusual):
    return random.choice(usual if often(random, 0.9) else unusual)
