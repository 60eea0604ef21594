# SPDX-License-Identifier: MIT
"""Keys and certificates for tests, made once by openssl, and changes to signed packages"""

import atexit
import pathlib
import shutil
import subprocess
import tempfile
import zipfile

FOLDER = None
NOW = 1_800_000_000  # when tests sign: in January 2027
SIGNATURES = "package/services/digital-signature/"
ORIGIN = SIGNATURES + "origin.psdsor"
BEGIN, END = "20260101000000Z", "20460101000000Z"

EXTENSIONS = """
[ca]
basicConstraints = critical, CA:TRUE
keyUsage = critical, keyCertSign
[leaf]
basicConstraints = CA:FALSE
keyUsage = critical, digitalSignature
[exchange]
keyUsage = critical, keyEncipherment
"""


def openssl(*words, **kw):
    return subprocess.run(["openssl", *map(str, words)], cwd=FOLDER, check=True,
                          stdout=subprocess.PIPE, stderr=subprocess.PIPE, **kw).stdout


def make_key(name, kind):
    words = {"rsa": ("RSA", "rsa_keygen_bits:2048"), "weak": ("RSA", "rsa_keygen_bits:1024")}
    algorithm, option = words.get(kind, ("EC", f"ec_paramgen_curve:{kind}"))
    openssl("genpkey", "-algorithm", algorithm, "-pkeyopt", option, "-out", f"{name}.key")
    (FOLDER / f"{name}.key").chmod(0o600)


def make_certificate(name, issuer, extensions, begin=BEGIN, end=END):
    """`name`.crt for `name`.key, signed by the key of `issuer`."""
    openssl("req", "-new", "-key", f"{name}.key", "-subj", f"/O=Test/CN={name}",
            "-out", f"{name}.csr")
    own = ("-selfsign", "-keyfile", f"{name}.key") if issuer == name else (
        "-cert", f"{issuer}.crt", "-keyfile", f"{issuer}.key")
    openssl("ca", "-config", "ca.conf", "-batch", "-notext", "-in", f"{name}.csr", *own,
            "-extensions", extensions, "-startdate", begin, "-enddate", end,
            "-out", f"{name}.crt")


CONF = """
[ca]
default_ca = default
[default]
database = index.txt
new_certs_dir = .
default_md = sha256
policy = any
rand_serial = yes
unique_subject = no
[any]
commonName = supplied
organizationName = optional
"""


def material():
    """A folder with a root, an intermediate below it, and signers: `rsa` and `p256` by the
    intermediate, the others by the root. chain.crt holds rsa.crt and intermediate.crt."""
    global FOLDER
    if FOLDER is not None:
        return FOLDER
    FOLDER = pathlib.Path(tempfile.mkdtemp(prefix="kraddon-keys-"))
    atexit.register(shutil.rmtree, FOLDER, ignore_errors=True)
    (FOLDER / "ca.conf").write_text(CONF.replace("[ca]", "[ca]", 1) + EXTENSIONS.replace(
        "[ca]", "[authority]"))
    (FOLDER / "index.txt").write_text("")
    for name, kind, issuer, extensions in (
            ("root", "rsa", "root", "authority"), ("other", "rsa", "other", "authority"),
            ("intermediate", "rsa", "root", "authority"), ("rsa", "rsa", "intermediate", "leaf"),
            ("p256", "P-256", "intermediate", "leaf"), ("p384", "P-384", "root", "leaf"),
            ("p521", "P-521", "root", "leaf"), ("weak", "weak", "root", "leaf"),
            ("exchange", "rsa", "root", "exchange"), ("k1", "secp256k1", "root", "leaf")):
        make_key(name, kind)
        make_certificate(name, issuer, extensions)
    shutil.copy(FOLDER / "rsa.key", FOLDER / "expired.key")
    make_certificate("expired", "root", "leaf", end="20260201000000Z")
    (FOLDER / "chain.crt").write_bytes((FOLDER / "rsa.crt").read_bytes() +
                                       (FOLDER / "intermediate.crt").read_bytes())
    return FOLDER


def words(name="rsa", certificate=None):
    """The options of 'sign' for one of the signers, at a fixed time."""
    folder = material()
    certificate = certificate or ("chain" if name == "rsa" else name)
    return ("--key", str(folder / f"{name}.key"), "--certificate",
            str(folder / f"{certificate}.crt"), "--timestamp", str(NOW))


def trust(name):
    return ("--trust", str(material() / f"{name}.crt"))


def rewrite(path, change, to=None):
    """Writes the package anew, its entries as `change`, which gets them as a dictionary by name,
    leaves them."""
    with zipfile.ZipFile(path) as archive:
        entries = {info.filename: archive.read(info) for info in archive.infolist()}
    change(entries)
    with zipfile.ZipFile(to or path, "w") as archive:
        for name, content in entries.items():
            archive.writestr(zipfile.ZipInfo(name, (2026, 2, 2, 2, 2, 2)), content)


def signature_names(path):
    with zipfile.ZipFile(path) as archive:
        return [name for name in archive.namelist() if name.endswith(".psdsxs")]
