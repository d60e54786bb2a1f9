"""Datagrams of cameras, written out by hand."""
MAC = "02005e1000af"


def reply(mac=MAC, name=b"Front door", address=(10, 9, 0, 2), port=80, changes=()):
    """A discovery reply of 505 bytes in hexadecimal, with 'SSSS' in the place of the sequence."""
    data = bytearray(505)
    data[0:2] = b"\xee\xfe"
    data[4:6] = b"\xa1\x00"
    data[6:12] = bytes.fromhex(mac)
    data[12:16] = bytes(address)
    data[18:22] = b"\x02\x00\xe3\x01"
    put(data, 22, b"Brand")
    put(data, 86, b"Product")
    put(data, 150, b"Model")
    put(data, 182, b"1.05")
    data[214:217] = b"\x03\x00\x01"
    data[220:226] = bytes.fromhex(mac)
    put(data, 226, name)
    data[290:294] = bytes(address)
    data[294:296] = port.to_bytes(2, "big")
    data[298:302] = b"\xff\xff\xff\x00"
    data[302:306] = b"\x0a\x09\x00\x01"
    data[306:310] = b"\x0a\x09\x00\x35"
    data[314] = 1
    put(data, 315, b"20260131235958")
    data[331:333] = b"\x2c\x01"
    put(data, 366, b"Rev B")
    for offset, value in changes:
        put(data, offset, value)
    text = data.hex()
    return text[:4] + "SSSS" + text[8:]


def report(sequence=0, name=b"Front door", changes=()):
    """A presence report of 317 bytes in hexadecimal."""
    data = bytearray(317)
    data[0:2] = b"\xff\xff"
    data[2:4] = sequence.to_bytes(2, "little")
    data[4:6] = b"\xa0\x00"
    data[6:12] = bytes.fromhex(MAC)
    data[12:16] = b"\x0a\x09\x00\x02"
    data[18:22] = b"\x02\x00\x27\x01"
    put(data, 22, b"Product")
    put(data, 86, b"3")
    put(data, 118, b"1.05")
    data[150:156] = bytes.fromhex(MAC)
    put(data, 156, b"Rev B")
    put(data, 220, name)
    data[284:292] = b"\x0a\x09\x00\x02\xff\xff\xff\x00"
    for offset, value in changes:
        put(data, offset, value)
    return data.hex()


def put(data, offset, value):
    data[offset:offset + len(value)] = value
