# SPDX-License-Identifier: MIT
"""Manipulations of the parts of a signed package, and of the ZIP file."""

from attack_list import EVIL, attack
from lab import signature_parts
from signer import FOLDER, ORIGIN_PART
from xml_signature import CERTIFICATE, CERTIFICATE_TYPE, ORIGIN_TYPE, SIGNATURE, SIGNATURE_TYPE

LICENSE = "http://schemas.pellandry.example/korvan/addon/2014/relationships/license"


# Parts

@attack
def a_file_is_changed(lab, package):
    package["/files/a.m"] = EVIL


@attack
def one_bit_of_a_file_is_changed(lab, package):
    content = bytearray(package["/files/lib/run.txt"])
    content[7] ^= 1
    package["/files/lib/run.txt"] = bytes(content)


@attack
def a_file_is_emptied(lab, package):
    package["/files/a.m"] = b""


@attack
def a_line_end_is_changed(lab, package):
    package["/files/a.m"] = package["/files/a.m"].replace(b"\n", b"\r\n")


@attack
def a_file_is_added(lab, package):
    package["/files/evil.m"] = EVIL


@attack
def an_empty_file_is_added(lab, package):
    package["/files/evil.m"] = b""


@attack
def a_file_is_added_with_a_type_of_its_own(lab, package):
    package.add("/files/evil.exe", EVIL, "application/octet-stream")


@attack
def a_file_is_removed(lab, package):
    package.remove("/files/b.m")


@attack
def a_file_is_renamed(lab, package):
    package["/files/c.m"] = package["/files/b.m"]
    package.remove("/files/b.m")


@attack
def the_case_of_a_name_is_changed(lab, package):
    package["/files/A.m"] = package["/files/a.m"]
    package.remove("/files/a.m")


@attack
def a_name_differs_only_in_case_from_a_signed_one(lab, package):
    package["/files/A.m"] = EVIL


@attack
def two_files_are_exchanged(lab, package):
    a, b = "/files/a.m", "/files/b.m"
    package[a], package[b] = package[b], package[a]


@attack
def a_letter_of_a_name_is_percent_encoded(lab, package):
    package["/files/%61.m"] = EVIL


@attack
def a_signed_name_is_percent_encoded(lab, package):
    package["/files/%61.m"] = package["/files/a.m"]
    package.remove("/files/a.m")


@attack
def a_name_is_percent_encoded_in_lower_case(lab, package):
    name = "/files/lib/gr%C3%B6%C3%9Fe.m"
    package["/files/lib/gr%c3%b6%c3%9fe.m"] = package[name]
    package.remove(name)


@attack
def a_name_is_composed_otherwise(lab, package):
    name = "/files/lib/gr%C3%B6%C3%9Fe.m"
    package["/files/lib/gro%CC%88%C3%9Fe.m"] = package[name]
    package.remove(name)


@attack
def a_file_comes_in_pieces_with_more_bytes(lab, package):
    package["/files/a.m/[0].piece"] = package["/files/a.m"]
    package["/files/a.m/[1].last.piece"] = EVIL
    package.remove("/files/a.m")


@attack
def pieces_lie_beside_a_signed_file(lab, package):
    package["/files/a.m/[0].last.piece"] = EVIL


@attack
def a_document_is_changed(lab, package):
    part = "/metadata/addonProperties.xml"
    package[part] = package[part].replace(b"</", b"X</", 1)


@attack
def a_document_gets_a_comment(lab, package):
    package["/metadata/addonProperties.xml"] += b"<!-- signed -->"


@attack
def a_document_is_added(lab, package):
    package.add("/metadata/license.xml", b"<license/>",
                "application/vnd.pellandry.korvan.addon.license+xml")


@attack
def a_document_is_added_and_related(lab, package):
    a_document_is_added(lab, package)
    package.relate("/", LICENSE, "/metadata/license.xml", "rLicense")


@attack
def a_backslash_hides_a_file(lab, package):
    package.items["files\\evil.m"] = EVIL


@attack
def a_file_is_added_beside_the_signatures(lab, package):
    package.add(FOLDER + "/evil.xml", EVIL, "application/xml")


@attack
def a_file_is_added_as_a_signature_part(lab, package):
    package.add("/files/evil.psdsxs", EVIL, SIGNATURE_TYPE)


@attack
def a_file_is_added_as_an_origin(lab, package):
    package.add("/files/evil.psdsor", EVIL, ORIGIN_TYPE)


@attack
def a_file_is_added_as_a_certificate(lab, package):
    package.add("/files/evil.cer", EVIL, CERTIFICATE_TYPE)


@attack
def a_file_is_related_as_a_certificate(lab, package):
    package.add("/files/evil.cer", EVIL, CERTIFICATE_TYPE)
    package.relate(signature_parts(package)[0], CERTIFICATE, "/files/evil.cer", "r1")


@attack
def other_bytes_are_related_as_a_certificate(lab, package):
    package.add(FOLDER + "/certificate/evil.cer", EVIL, CERTIFICATE_TYPE)
    package.relate(signature_parts(package)[0], CERTIFICATE, FOLDER + "/certificate/evil.cer", "r1")


@attack
def a_certificate_with_bytes_behind_it_is_related(lab, package):
    part = FOLDER + "/certificate/evil.cer"
    package.add(part, lab.eve.certificate_bytes() + EVIL, CERTIFICATE_TYPE)
    package.relate(signature_parts(package)[0], CERTIFICATE, part, "r1")


@attack
def a_file_is_related_as_a_signature(lab, package):
    package.add("/files/evil.psdsxs", EVIL, SIGNATURE_TYPE)
    package.relate(ORIGIN_PART, SIGNATURE, "/files/evil.psdsxs", "r9")


# ZIP files

@attack
def a_name_occurs_twice(lab, package):
    raw = package.bytes()
    package.items["files/x.m"] = EVIL
    raw = package.bytes()
    return raw.replace(b"files/x.m", b"files/a.m")


@attack
def bytes_lie_before_the_package(lab, package):
    return EVIL + package.bytes()


@attack
def bytes_lie_behind_the_package(lab, package):
    return package.bytes() + EVIL


@attack
def the_local_name_is_another(lab, package):
    raw = package.bytes()
    at = raw.index(b"files/b.m")
    return raw[:at] + b"files/c.m" + raw[at + 9:]


@attack
def the_directory_name_is_another(lab, package):
    raw = package.bytes()
    at = raw.rindex(b"files/b.m")
    return raw[:at] + b"files/c.m" + raw[at + 9:]


@attack
def two_packages_are_joined(lab, package):
    return lab.unsigned + package.bytes()


@attack
def the_name_of_a_folder_is_added(lab, package):
    package.items["files/a.m/evil.m"] = EVIL
