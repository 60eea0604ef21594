// SPDX-License-Identifier: MIT
#include "opc/checks/PackageFindings.h"

namespace opc::checks {
namespace {

constexpr FindingInfo kFindings[] = {
    {kNotZip, "not a ZIP file, or truncated",
     "A package is a ZIP file, which ends with a record that gives the position of the directory "
     "of its items. The record is missing, the directory is not at that position, or there are "
     "two such records, of which programs may use either. Nothing else can be checked.",
     "Download or build the package again; an interrupted download is the usual cause."},
    {kBytesOutside, "bytes before the first or after the last record",
     "There are bytes before the first item or after the end of the archive. They belong to no "
     "part. Some programs reject such a file, and the bytes are lost when the package is saved. In "
     "an add-on this is an error, except for zeros and newlines at the end: programs that read "
     "the file from its beginning unpack items from there.",
     "Rewrite the package without the extra bytes."},
    {kDuplicateName, "duplicate name",
     "Two items have the same name. Programs may use either, so what was checked may not be what "
     "is installed.",
     "Remove one of the two items."},
    {kUnusableName, "unusable name",
     "The name of an item has a '..' segment, contains a NUL, or is marked as UTF-8 but is not "
     "valid UTF-8. Such names are used to write outside the folder into which a package is "
     "extracted, or are read differently by different programs.",
     "Rename the item, and do not extract the package unless you trust it."},
    {kHeadersDisagree, "local header and directory disagree",
     "Every item is described twice: in the directory, and next to its data. The two must agree "
     "on name, method, sizes and checksum. Where they do not, programs see different packages.",
     "Rewrite the package with a reliable program."},
    {kDamagedData, "damaged data",
     "The data of an item cannot be decompressed, or does not match its declared size or checksum.",
     "Download or build the package again."},
    {kOverlappingItems, "items overlap or leave the file",
     "Items share bytes with each other or with the directory, or extend beyond the end of the "
     "file. This is how items are hidden, and how small files are made that decompress to "
     "enormous ones.",
     "Download or build the package again. If the finding remains, do not trust the package."},
    {kUnsupportedPacking, "encrypted, or unknown compression method",
     "An item is encrypted, or uses a compression method other than the two that packages allow: "
     "stored and deflated.",
     "Add the item again, without a password and with the deflate method."},
    {kInconsistentRecords, "inconsistent counts, ZIP64 or disk fields",
     "The records at the end of the file contradict each other or the directory, refer to values "
     "that are missing, or say that the file is one volume of several.",
     "Rewrite the package as a single file with a reliable program."},
    {kLinkOrDevice, "link or device",
     "An item is a symbolic link, a device or something else that is not a file. It is not a part "
     "of the package, and is never created when the package is extracted. Other programs create "
     "it, so in an add-on this is an error.",
     "Add the file that the link points to, or remove the item."},
    {kNameNotAscii, "non-ASCII name",
     "The name of an item contains non-ASCII characters. In packages these are percent-encoded; "
     "otherwise programs read them differently. In an add-on this is an error if the name is not "
     "marked as UTF-8, or the item was not made on Unix, or the name contains characters that some "
     "programs change, such as a letter and a combining accent.",
     "Rewrite the package with a program that encodes the names."},
    {kHighRatio, "extreme compression ratio",
     "An item decompresses to more than 64 MiB and more than 200 times its compressed size. Such "
     "files exist, but this is also how small packages are made to fill disks.",
     "Make sure that the file is meant to be that large."},
    {kUnusedBytes, "bytes that belong to no item",
     "There are unused bytes between items, after the directory or within extra fields, a header "
     "has ZIP64 fields of which readers may use either, the end of stored data of unknown size can "
     "be mistaken, or there is an earlier directory, for example in the data of an item. "
     "Something may be hidden there, or an item was removed carelessly. "
     "In an add-on this is an error, since other programs may unpack it.",
     "Extract the files and create a new package; changing this one may keep the bytes."},
    {kUnsafeName, "absolute path, drive, backslash or control character in a name",
     "The name of an item begins with a slash or a drive letter, contains a backslash or a "
     "control character (also percent-encoded), encodes bytes that are not valid UTF-8, ends in a "
     "version number such as ';1', or is longer than 4,000 bytes. Programs treat such names "
     "differently, so in an add-on this is an error, unless the character is percent-encoded.",
     "Rename the item: use a relative path with '/' between folders, without control characters."},
    {kDuplicateFolder, "duplicate folder entry",
     "Two entries of the archive stand for the same folder. They have no meaning in a package.",
     "Rewrite the package; folder entries are left out."},
    {kOtherUnicodePath, "Unicode path field gives another name",
     "A header has an extra field with the name of the item in Unicode, and it is not the name "
     "that "
     "the directory gives. Many programs use the name in the field, so that they unpack other "
     "files "
     "than those that were checked.",
     "Rewrite the package with a program that does not write such fields."},
    {kContradictingMarks, "inconsistent file, folder or link type",
     "Name, attributes and extra fields of an item do not agree on whether it is a file, a folder "
     "or a link, or a folder holds data. Programs differ in what they create, or skip the item. In "
     "an add-on it is also an error if a folder has the path of a file or the mode of one.",
     "Rewrite the package with a reliable program."},
    {kUnusualDemands, "header needs a feature that readers handle differently",
     "A header says that the item needs a version of the format above 4.5, or sets flags that are "
     "reserved. Stored and deflated items need neither. Some programs skip such an item or refuse "
     "the file, others ignore it.",
     "Rewrite the package with a reliable program."},
    {kEndRecordInComment, "comment holds an end record",
     "The comment of the archive or of an item contains what looks like the record at the end of "
     "an "
     "archive. Programs that take it for that record see another directory, or none.",
     "Remove the comment."},
    {kBadContentTypes, "content types missing or malformed",
     "The item '[Content_Types].xml' gives the type of every part. It is missing, present twice, "
     "or not a valid document. Without it, parts cannot be distinguished from other items.",
     "Correct the item, or rewrite the package."},
    {kRelatedWithoutType, "related part without content type",
     "A relationship leads to an item, or an item has relationships, but the content types have "
     "no entry for the item. Without a content type it is not a part, and cannot be related.",
     "Add a 'Default' for its extension or an 'Override' for its name to the content types."},
    {kOverrideWithoutPart, "type override for a missing part",
     "The content types have an 'Override' for a part that is not in the package.",
     "Remove the 'Override', or add the part."},
    {kDuplicateContentType, "duplicate content type entry",
     "The content types have two entries for one extension or one part name, ignoring the case of "
     "ASCII letters. Programs may use either.",
     "Remove one of the two entries."},
    {kEquivalentNames, "equivalent part names",
     "Two items have equivalent part names: the names differ only in the case of ASCII letters, "
     "or in whether a character is percent-encoded.",
     "Rename or remove one of the two."},
    {kBadContentTypeEntry, "invalid part name, extension or media type",
     "An entry of the content types has an invalid part name or extension, or a media type that "
     "is not of the form 'type/subtype'.",
     "Correct the entry of the content types."},
    {kNameExtendsName, "part name extends another",
     "The name of a part is that of another part followed by more segments, such as '/a/b' beside "
     "'/a'. One of them would have to be a file and a folder at the same time.",
     "Rename one of the two parts."},
    {kBadRelationships, "malformed relationships",
     "A relationships part is not a valid document, contains a relationship that cannot be read, "
     "or does not have the content type of relationships parts.",
     "Correct the relationships part at the reported position."},
    {kBadRelationshipId, "missing, duplicate or invalid relationship id",
     "Every relationship needs an id that is an XML name without a colon and unique among the "
     "relationships of its part. Documents refer to the relationship by this id.",
     "Give the relationship a unique id, such as 'rId7'."},
    {kMissingTarget, "missing target",
     "A relationship leads to a part that is not in the package. Following it fails.",
     "Add the part, or remove the relationship."},
    {kBadExternalTarget, "empty or invalid external target",
     "The target of an external relationship is empty or not a valid IRI. For example, a space or "
     "a backslash must be percent-encoded.",
     "Write the target as a valid IRI, or remove the relationship."},
    {kSeveralCoreRelationships, "several core properties relationships",
     "A package may have at most one relationship to core properties. With several, it is not "
     "clear which properties are those of the package.",
     "Remove all of these relationships but one."},
    {kBadCoreProperties, "invalid core properties",
     "The part with title, creator, dates and so on is missing, has the wrong content type, or "
     "contains something that its schema does not allow. The schema is closed: most programs "
     "reject the part, some the whole package.",
     "Correct the part, or remove what the message names."},
    {kDoctypeOrEncoding, "document type declaration or unsupported encoding",
     "Content types, relationships and core properties must be UTF-8 or UTF-16, without a "
     "document type declaration, which could make readers open other files or exhaust their "
     "memory.",
     "Save the item as UTF-8, without a '<!DOCTYPE' line."},
    {kOrphanRelationships, "relationships of a missing part",
     "The part to which a relationships part belongs is not in the package. The relationships are "
     "ignored, and dropped when the package is saved.",
     "Remove the relationships part, or add the part that it belongs to."},
    {kUncheckedSignature, "signature present, not checked",
     "The package has a digital signature of a kind that is not supported, or a malformed one. In "
     "an add-on that is an error (KR608).",
     "Check the signature with the program that created it."},
    {kStrayItem, "item that is not a part",
     "The name of an item is not a valid part name, or the item has no content type. Programs "
     "that read packages do not see it, and drop it when they save. In an add-on this is an error "
     "if ZIP programs unpack the item to the path of another one, or do not agree on its path.",
     "Rename the item, give it a content type, or remove it."},
    {kRelatedRelationships, "relationship from or to a relationships part",
     "A relationships part has relationships of its own, or is the target of a relationship. "
     "Neither is allowed.",
     "Remove that relationships part, or that relationship."},
    {kClashingPieces, "clashing pieces of a part",
     "A part that is stored in pieces has two pieces with the same number, or is also present as "
     "a whole. Programs would assemble different parts.",
     "Store the part as one item."},
    {kSeveralCoreParts, "several core properties parts",
     "Several parts have the content type of core properties, but only one of them can be the "
     "target of the relationship. The others are usually leftovers.",
     "Remove the parts that no relationship leads to."},
    {kNormalisationClash, "names that differ only in normalisation",
     "Two part names look the same and differ only in how their characters are composed, for "
     "example an accented letter and a letter followed by a combining accent. Some file systems "
     "treat them as one name.",
     "Rename one of the two parts."},
    {kContentTypesSpelling, "misspelled name of the content types",
     "The item with the content types must be called exactly '[Content_Types].xml'. Names are "
     "compared ignoring case, but some programs insist on this spelling.",
     "Rename the item to '[Content_Types].xml'."},
    {kEmptyContentTypes, "no content types",
     "The content types are well-formed but empty. Without types the package has no parts.",
     "Add a 'Default' for each extension in use."},
    {kRelationshipsType, "relationships type missing or misplaced",
     "A relationships part has no content type, or another part has the content type of a "
     "relationships part. Some programs insist on the type; others are misled by it.",
     "Add the 'Default' for 'rels', or give the other part a type of its own."},
    {kOddTarget, "target needs correction",
     "The target of a relationship contains a query, a backslash, a space or a needlessly encoded "
     "character. It is corrected here when it is read; other programs do not find the part.",
     "Write the target as an absolute part name, such as '/metadata/license.xml'."},
    {kOddCoreProperties, "readable but incorrect core properties",
     "The core properties contain something that can be read but is not correct: an empty date, a "
     "date without a time or time zone, an element of the first edition, or an unusual prefix.",
     "Write the property as the message says; dates as '2026-02-01T10:00:00Z'."},
    {kThumbnailNotImage, "thumbnail is not an image",
     "A relationship marks a part as a thumbnail, but the part does not have the content type of "
     "an image. Programs that show thumbnails show nothing.",
     "Correct the content type, or let the relationship lead to an image."},
    {kIncompletePieces, "incomplete pieces",
     "Items have names of pieces of a part, but do not make up a complete one: a number or the "
     "last piece is missing, or the name before the piece's own is not a valid part name. They "
     "are ignored, and dropped when the package is saved.",
     "Add the missing pieces, or remove the others."},
};

}  // namespace

std::span<const FindingInfo> packageFindings() {
  return kFindings;
}

}  // namespace opc::checks
