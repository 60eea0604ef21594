// SPDX-License-Identifier: MIT
#include "opc/checks/PackageFindings.h"

namespace opc::checks {
namespace {

constexpr FindingInfo kFindings[] = {
    {kNotZip, "not a ZIP file, or cut off",
     "A package is a ZIP file, which ends with a record that says where the directory of its items "
     "lies. The record is not there, the directory is not where it says, or there are two of them "
     "and programs would differ in which one they take. Nothing else can be checked.",
     "Fetch or build the package again; an interrupted download is the usual reason."},
    {kBytesOutside, "bytes in front of the first or behind the last record",
     "Bytes stand in front of the first item or behind the end of the archive. They belong to no "
     "part; some programs refuse such a file, and the bytes are lost when the package is saved.",
     "Write the package anew, without what was put in front of it or appended to it."},
    {kDuplicateName, "name twice",
     "Two items have the same name. Programs differ in which one they take, so that what was "
     "looked at need not be what is installed.",
     "Remove one of the two items."},
    {kUnusableName, "unusable name",
     "The name of an item has a segment '..', holds a NUL, or is marked as UTF-8 and is not. Such "
     "names are used to write outside of the folder that a package is extracted to, or read "
     "differently in every program.",
     "Give the item another name, and do not extract the package unless you trust it."},
    {kHeadersDisagree, "local header and directory disagree",
     "Every item is described twice: in the directory, and in front of or behind its data. The two "
     "must agree in name, method, sizes and checksum; where they do not, programs see different "
     "packages.",
     "Write the package anew with a program that is sound."},
    {kDamagedData, "data damaged",
     "The data of an item cannot be unpacked, or do not have the size or the checksum that the "
     "package declares for them.",
     "Fetch or build the package again."},
    {kOverlappingItems, "items overlap or leave the file",
     "Items share bytes with each other or with the directory, or reach beyond the end of the "
     "file. Small files that unpack to enormous ones are made in that way, and hidden items.",
     "Fetch or build the package again, and do not trust it when it stays so."},
    {kUnsupportedPacking, "encrypted, or packed with an unknown method",
     "An item is encrypted, or packed with another method than the two that packages allow: "
     "stored and deflated.",
     "Pack the item again, without a password and with the deflate method."},
    {kInconsistentRecords, "counts, ZIP64 or disk fields inconsistent",
     "The records at the end of the file contradict each other or the directory, refer to values "
     "that are not there, or say that the file is one volume of several.",
     "Write the package anew as one file, with a program that is sound."},
    {kLinkOrDevice, "link or device",
     "An item is a symbolic link, a device or something else that is no file. It is no part of the "
     "package, and is never made when the package is extracted.",
     "Pack the file that the link leads to, or remove the item."},
    {kNameNotAscii, "name not ASCII",
     "The name of an item holds characters outside ASCII. In packages these are percent-encoded; "
     "programs differ in how they read them otherwise.",
     "Write the package anew with a program that encodes the names."},
    {kHighRatio, "unpacks to very much more",
     "An item unpacks to more than 64 MiB and more than the 200-fold of its packed size. There are "
     "files like that, but it is also how small packages are made to fill disks.",
     "Make sure that the file is meant to be that large."},
    {kUnusedBytes, "bytes that belong to no item",
     "There are bytes between items, behind the directory or within extra fields that belong to "
     "nothing, or a header has two ZIP64 fields, of which readers may take either. Something may "
     "be hidden there, or an item was removed carelessly.",
     "Write the package anew; the bytes are left out."},
    {kUnsafeName, "absolute, drive, backslash or control character in a name",
     "The name of an item begins with a slash or a drive letter, or holds a backslash or a control "
     "character, written out or percent-encoded, or encodes bytes that are no UTF-8. Systems take "
     "such names differently; files of such a name are not extracted.",
     "Rename the item: relative, with '/' between folders, without control characters."},
    {kDuplicateFolder, "folder entry twice",
     "Two entries of the archive are for the same folder. They mean nothing to a package.",
     "Write the package anew; entries of folders are left out."},
    {kBadContentTypes, "content types missing or malformed",
     "The item '[Content_Types].xml' says of what type every part is. It is missing, there twice, "
     "or no document of the right form. Which items are parts cannot be told without it.",
     "Correct the item, or write the package anew."},
    {kRelatedWithoutType, "related part without content type",
     "A relationship leads to an item, or an item has relationships, although the content types "
     "have no entry for it. Without a content type it is no part, and cannot be related.",
     "Add a 'Default' for its extension or an 'Override' for its name to the content types."},
    {kOverrideWithoutPart, "type override for a missing part",
     "The content types have an 'Override' for a part that is not in the package. Either the entry "
     "or the part was forgotten.",
     "Remove the 'Override', or add the part."},
    {kDuplicateContentType, "content type given twice",
     "The content types have two entries for one extension or one part name, which compare without "
     "the case of ASCII letters. Programs differ in which one they take.",
     "Remove one of the two entries."},
    {kEquivalentNames, "part names equivalent",
     "Two items have names that are one part name: they differ only in the case of ASCII letters, "
     "or in whether a character is percent-encoded.",
     "Rename or remove one of the two."},
    {kBadContentTypeEntry, "invalid part name, extension or media type",
     "An entry of the content types names no part name, no extension, or no media type of the form "
     "'type/subtype'.",
     "Correct the entry of the content types."},
    {kNameExtendsName, "part name extends another one",
     "The name of a part is that of another part with further segments, such as '/a/b' beside "
     "'/a'. One would have to be a file and a folder at once.",
     "Rename one of the two parts."},
    {kBadRelationships, "relationships malformed",
     "A relationships part is no document of the right form, has a relationship that cannot be "
     "read, or has another content type than relationships parts have.",
     "Correct the relationships part at the place that is named."},
    {kBadRelationshipId, "relationship id missing, twice or invalid",
     "Every relationship has an id that is an XML name without colon and that no other "
     "relationship of the same part has. Others refer to the relationship by it.",
     "Give the relationship an id of its own, such as 'rId7'."},
    {kMissingTarget, "target missing",
     "A relationship leads to a part that is not in the package. Who follows it fails.",
     "Add the part, or remove the relationship."},
    {kBadExternalTarget, "external target empty or no IRI",
     "A relationship leads out of the package to something that is empty or not written as an "
     "address (an IRI); a blank or a backslash has to be percent-encoded, for example.",
     "Write the target as an address, or remove the relationship."},
    {kSeveralCoreRelationships, "two core properties relationships",
     "A package may have one relationship to core properties at most. With several nobody can tell "
     "which properties are the package's.",
     "Remove all of these relationships but one."},
    {kBadCoreProperties, "core properties invalid",
     "The part with title, creator, dates and the like is not there, has another content type, or "
     "holds what its schema does not allow. The schema is closed: most programs refuse the part, "
     "some the package.",
     "Correct the part, or remove what is named from it."},
    {kDoctypeOrEncoding, "document type declaration, or another encoding",
     "The content types, relationships and core properties are in UTF-8 or UTF-16 and have no "
     "document type declaration, which could make readers open other files or use up their memory.",
     "Save the item in UTF-8, without a '<!DOCTYPE' line."},
    {kOrphanRelationships, "relationships of a missing part",
     "There is a relationships part, but no part that these relationships start from. They are "
     "ignored, and dropped when the package is saved.",
     "Remove the relationships part, or add the part that it belongs to."},
    {kUncheckedSignature, "signature present, not checked",
     "The package carries a digital signature. Signatures are not checked here, and every change "
     "to the package makes them invalid.",
     "Check the signature with the program that made it."},
    {kStrayItem, "item that is no part",
     "The name of an item is no part name, or it has no content type. Programs that read packages "
     "do not see it, and drop it when they save.",
     "Rename the item, give it a content type, or remove it."},
    {kRelatedRelationships, "relationship to or from relationships",
     "A relationships part has relationships of its own, or is the target of one. Neither is "
     "allowed.",
     "Remove that relationships part, or that relationship."},
    {kClashingPieces, "pieces of a part clash",
     "A part that is stored in pieces has two pieces of one number, or is there as a whole too. "
     "Programs would put together different parts.",
     "Store the part as one item."},
    {kSeveralCoreParts, "two core properties parts",
     "Several parts have the content type of core properties, and only one of them can be related "
     "as such. The others are leftovers as a rule.",
     "Remove the parts that no relationship leads to."},
    {kNormalisationClash, "names equal but for normalisation",
     "Two part names look the same and differ only in how their characters are composed, such as a "
     "letter with accent and a letter followed by an accent. Some file systems take them for one.",
     "Rename one of the two parts."},
    {kContentTypesSpelling, "content types spelled in another case",
     "The item with the content types is called '[Content_Types].xml', to the letter. Names "
     "compare "
     "without case, but some programs insist on the spelling.",
     "Rename the item to '[Content_Types].xml'."},
    {kEmptyContentTypes, "no content types",
     "The content types are well-formed and empty. A package without any typed part holds nothing.",
     "Add a 'Default' for each extension in use."},
    {kRelationshipsType, "type of relationships missing or elsewhere",
     "A relationships part has no content type, or a part that is none has the type of "
     "relationships parts. Some programs insist on the type, others are misled by it.",
     "Add the 'Default' for 'rels', or give the other part a type of its own."},
    {kOddTarget, "target needs mending",
     "The target of a relationship has a query, a backslash, a blank or a needlessly encoded "
     "character. It is put right in reading here; other programs do not find the part.",
     "Write the target as an absolute part name, such as '/metadata/license.xml'."},
    {kOddCoreProperties, "core properties odd but readable",
     "The core properties hold something that can be read but should not be written so: an empty "
     "date, a date without time or zone, an element of the first edition, another prefix.",
     "Write the property as the message tells; dates as '2026-02-01T10:00:00Z'."},
    {kThumbnailNotImage, "thumbnail no image",
     "A relationship says that a part is a thumbnail, but the content type of the part is not that "
     "of an image. Programs that show thumbnails show nothing.",
     "Correct the content type, or let the relationship lead to an image."},
    {kIncompletePieces, "incomplete pieces",
     "Items are called like pieces of a part, but do not make up a whole one: a number is missing, "
     "or the last piece, or the name in front of them is no part name. They are ignored, and "
     "dropped when the package is saved.",
     "Add the missing pieces, or remove the others."},
};

}  // namespace

std::span<const FindingInfo> packageFindings() {
  return kFindings;
}

}  // namespace opc::checks
