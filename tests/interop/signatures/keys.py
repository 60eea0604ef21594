# SPDX-License-Identifier: MIT
"""Keys and certificates for the tests. RSA keys are made once for a process."""

import datetime
import functools

from cryptography import x509
from cryptography.hazmat.primitives import hashes, serialization
from cryptography.hazmat.primitives.asymmetric import ec, rsa
from cryptography.x509.oid import NameOID

CURVES = {"p256": ec.SECP256R1, "p384": ec.SECP384R1, "p521": ec.SECP521R1, "p224": ec.SECP224R1,
          "k256": ec.SECP256K1}
SINCE = datetime.datetime(2020, 1, 1)
UNTIL = datetime.datetime(2040, 1, 1)


@functools.lru_cache(maxsize=None)
def key(kind="p256", number=0):
    """A key named like "p256" or "rsa2048"; `number` distinguishes keys of one kind."""
    if kind in CURVES:
        return ec.generate_private_key(CURVES[kind]())
    return rsa.generate_private_key(65537, int(kind[3:]))


class Signer:
    """A key, its certificate, and the certificates above it."""

    def __init__(self, kind="p256", name="Ada Lind", issuer=None, number=0, since=SINCE,
                 until=UNTIL, is_authority=False):
        self.key = key(kind, (name, number))
        subject = x509.Name([x509.NameAttribute(NameOID.COMMON_NAME, name)])
        builder = (x509.CertificateBuilder().subject_name(subject)
                   .issuer_name(issuer.certificate.subject if issuer else subject)
                   .public_key(self.key.public_key()).serial_number(x509.random_serial_number())
                   .not_valid_before(since).not_valid_after(until))
        if is_authority:
            builder = builder.add_extension(x509.BasicConstraints(True, None), True)
            builder = builder.add_extension(
                x509.KeyUsage(*[name in (5, 6) for name in range(9)]), True)
        self.certificate = builder.sign(issuer.key if issuer else self.key, hashes.SHA256())
        self.chain = [self.certificate, *(issuer.chain if issuer else [])]

    def certificate_bytes(self):
        return self.certificate.public_bytes(serialization.Encoding.DER)

    def pem(self, chain=None):
        return b"".join(each.public_bytes(serialization.Encoding.PEM)
                        for each in (self.chain if chain is None else chain))

    def key_pem(self, passphrase=None):
        protection = (serialization.BestAvailableEncryption(passphrase) if passphrase
                      else serialization.NoEncryption())
        return self.key.private_bytes(serialization.Encoding.PEM,
                                      serialization.PrivateFormat.PKCS8, protection)
