// SPDX-License-Identifier: MIT
#include "addon/checks/AddonFindings.h"

namespace addon::checks {
namespace {

constexpr FindingInfo kFindings[] = {
    {kMalformedDocument, "document not well-formed",
     "A document of the add-on is no well-formed XML. The host cannot read any of it, not even "
     "what stands in front of the fault.",
     "Mend the XML at the line that is named, or write the document anew with 'kraddon set'."},
    {kWrongRoot, "root element of another name or namespace",
     "The document's root element has another name or namespace than documents of its kind have. "
     "The host reads it nevertheless, but other programs may take it for something else. When the "
     "name is wrong, nothing inside is checked.",
     "Give the root element the name and the namespace that the message tells."},
    {kMissingElement, "required element missing or unusable",
     "An element is missing that its document means nothing without: the identifier of the "
     "properties, the text of the license, the file of an app, the description of a revision; or "
     "the table of the file tree has an entry that cannot be used, so that none of the files can "
     "be read.",
     "Add the element, or write the document anew with 'kraddon set'."},
    {kUnknownElement, "unknown element or attribute",
     "A document has an element or attribute that the format does not know at this place. It is "
     "passed over when the document is read, and lost when the document is written again. Often "
     "it is a misspelt name.",
     "Correct the name, or remove the element or attribute."},
    {kWrongContentType, "document with another content type",
     "The part of a document has another content type than documents of its kind have. Readers "
     "that go by content types do not find it or refuse it.",
     "Correct the content type, or write the document anew with 'kraddon set'."},
    {kSeveralRelationships, "two relationships of one type",
     "The package has several relationships of a type of which it may have one. Since none of "
     "them can be told to be the right one, the document reads as if it were not there.",
     "Remove all of these relationships but one."},
    {kUnreachableDocument, "document that no relationship leads to",
     "By its name or content type a part is a document of the add-on, but the package has no "
     "relationship of the document's type to it. Documents are found by their relationship alone, "
     "so that nobody reads this one.",
     "Add the relationship, or remove the part."},
    {kUnknownAddonType, "add-on type unknown",
     "The host's properties name the type of the add-on. Only 'Korvan Toolbox' is known, to the "
     "letter; the host does not install anything else.",
     "Create the package anew with 'kraddon create', which writes that type."},
    {kNoName, "no name",
     "The add-on has no name: the title of the core properties is missing or blank. The host "
     "lists and installs add-ons by their name.",
     "Give it a name with 'kraddon set PACKAGE properties name=NAME'."},
    {kNoVersion, "no version",
     "The add-on has no version, so that nobody can tell whether an update is newer.",
     "Give it a version with 'kraddon set PACKAGE properties version=VERSION'."},
    {kBadFlag, "flag neither true nor false",
     "Flags are the texts 'true' and 'false', in small letters and without blanks. Everything "
     "else, such as '1' or 'yes', reads as 'false'.",
     "Write 'true' or 'false'."},
    {kBadExampleFile, "type of an example's file unknown or twice",
     "The files of an example are of the type 'source', 'main', 'thumbnail' or 'image', and only "
     "images may be several. A file of another type is passed over; of two of one type the last "
     "one counts.",
     "Correct the type, or remove the file from the example."},
    {kImageMismatch, "image that does not match its type",
     "The first bytes of the screenshot are not those of an image of its content type. Programs "
     "that go by the type show nothing, or an error.",
     "Save the image in the format that its extension says, and store it again with "
     "'kraddon screenshot'."},
    {kDocumentTooLarge, "document too large or too deep",
     "Documents are read up to 64 MiB and 256 levels of elements, with limits on the number and "
     "size of attributes, so that no package can exhaust the memory of the host. A document "
     "beyond that is not read at all.",
     "Make the document smaller."},
    {kSeveralAuthors, "more than one author",
     "The properties name several authors. Only the first one is read, and the others are lost "
     "when the properties are written again.",
     "Put all names into the one author, or into the organization."},
    {kMissingPart, "part missing",
     "A relationship of the package names a document or the screenshot, but its part is not in "
     "the package. Reading the document fails, which some hosts take for a damaged package.",
     "Add the part, or remove the relationship."},
    {kDocumentDoctypeOrEncoding, "document type declaration, or another encoding",
     "Documents are in UTF-8 or UTF-16 and have no document type declaration, which could make "
     "readers open other files or use up their memory. A document that breaks this is refused.",
     "Save the document in UTF-8, without a '<!DOCTYPE' line."},
    {kMissingAppFile, "app file missing",
     "An app names a file that is not in the package. It cannot be installed.",
     "Add the file, or correct the path of the app; paths are relative to the top of the file "
     "tree, with '/'."},
    {kMissingExampleCode, "source or main file of an example missing",
     "An example names a source or main file that is not in the package, so that it cannot be "
     "opened.",
     "Add the file, or correct its path in the example."},
    {kMissingExampleImage, "thumbnail or image of an example missing",
     "An example names a thumbnail or an image that is not in the package. The example can be "
     "opened, but is shown without it.",
     "Add the image, or remove it from the example."},
    {kMissingSearchPath, "search path missing",
     "The configuration puts a folder on the host's search path that is not in the package, or "
     "that is a file. The host warns about it at every start, and does not find the functions.",
     "Add the folder, or correct the path; '.' is the top of the file tree."},
    {kMissingClassPath, "Java class path missing",
     "The configuration puts a file or folder on the Java class path that is not in the package. "
     "Its classes cannot be loaded from there.",
     "Add the file, or remove it from the class path."},
    {kThumbnailDiffers, "screenshot and thumbnail differ",
     "Two relationships lead to the screenshot: the host's own, and that of the thumbnail, which "
     "other programs show. They lead to different parts, or the thumbnail has none.",
     "Store the screenshot again with 'kraddon screenshot', which writes both."},
    {kRevisionMismatch, "newest revision is not the version",
     "The newest entry of the revision history has another version than the add-on. When all "
     "revisions have dates of the form YYYY-MM-DD the newest is the one with the latest date; "
     "otherwise it may be the first or the last one.",
     "Add a revision for this version, or correct the version."},
    {kPathCase, "path in another case",
     "A path in a document and a path in the package differ only in the case of letters. It works "
     "where file systems do not tell cases apart, and fails everywhere else.",
     "Write the path as the file or folder is called."},
    {kPathOutside, "path leads out of the package",
     "A path in a document is absolute, or climbs above the top of the file tree with '..'. On "
     "another machine it names something else or nothing, and following it could reach files that "
     "are none of the add-on's.",
     "Write a path that is relative to the top of the file tree."},
    {kDuplicateGuid, "GUID twice",
     "Two apps, or an app and the add-on, have the same GUID. Hosts tell them apart by it, so "
     "that one takes the place of the other.",
     "Give each of them a GUID of its own, such as 'uuidgen' makes."},
    {kFileOutsideTree, "file that is not in the tree",
     "Something lies where the files are kept and is none of them: another file has its path, or "
     "its name cannot be decoded. It is not extracted, and listed with all parts only; other "
     "programs may see it all the same, and take it for the file.",
     "Remove it with a ZIP program, or rename it."},
    {kNoLicense, "no license",
     "The add-on has no license, or one without text. Without terms nobody may use or share it, "
     "and many catalogues do not take it.",
     "Add one with 'kraddon set PACKAGE license type=TYPE text=TERMS', or as [license] to the "
     "manifest."},
    {kNoSummary, "no summary or description",
     "The add-on has no summary, the one line that lists show, or no description, which tells "
     "users what it is for.",
     "Set both with 'kraddon set PACKAGE properties summary=TEXT description=TEXT', or in the "
     "manifest."},
    {kNoAuthor, "no author or contact",
     "The add-on names no author, or no way to reach him. Users with a question or a fault to "
     "report have nobody to turn to.",
     "Set both with 'kraddon set PACKAGE properties authorName=NAME authorContact=ADDRESS', or "
     "'author' and 'contact' in the manifest."},
    {kNoScreenshot, "no screenshot",
     "The add-on has no screenshot. Hosts and catalogues show a blank image in its place.",
     "Add one with 'kraddon screenshot PACKAGE IMAGE', or as 'screenshot' to the manifest."},
    {kNotGuid, "not a GUID",
     "The add-on or one of its apps has no GUID, or one that is not of the form 8-4-4-4-12 "
     "hexadecimal digits. Hosts know add-ons by it from one version to the next.",
     "Set a GUID, such as 'uuidgen' makes, and never change it."},
    {kOddVersion, "version not made of numbers",
     "The version is not of the form N.N, N.N.N and so on. Hosts compare versions number by "
     "number, and cannot tell whether this one is newer than another.",
     "Write the version as two or more numbers with dots between them."},
    {kNotPortable, "name that is not portable",
     "A file or folder has a name that some systems cannot store: the name of a device on "
     "Windows, one of the characters < > : \" | ? * \\, a control character, a dot or space at "
     "the end, or more than 255 bytes. The add-on cannot be installed there.",
     "Rename the file or folder."},
    {kExcludedFile, "file that add-ons are built without",
     "The file or folder is one that authors do not mean to ship: files of version control, of "
     "systems and of editors, which are left out by default when an add-on is built.",
     "Remove it, or ignore this finding for its path when it belongs to the add-on."},
    {kSecret, "secret",
     "The file looks like one that must not be published: a private key, or a file named for "
     "passwords such as '.env' or '.netrc'. Everybody who has the package can read it.",
     "Remove the file, and change the password or key if the package was published."},
    {kLargeFile, "large file",
     "The file has more than 10 MiB. Everybody who installs the add-on downloads it.",
     "Make the file smaller, or let users fetch it when they need it."},
    {kNoFiles, "no files",
     "The add-on has documents, but not one file. There is nothing to install.",
     "Add the add-on's files with 'kraddon add'."},
    {kDuplicateContent, "same content twice",
     "Two files of more than 64 KiB hold the same bytes. The package carries them twice.",
     "Keep one of the files, and refer to it from both places."},
    {kFutureTime, "entry time in the future",
     "The time of an entry is more than a day in the future. Tools that go by times, such as "
     "builds and backups, take the file for changed or never update it.",
     "Correct the clock, or set the times anew when the package is built."},
    {kCaseClash, "paths that differ only in case",
     "Two files or folders have paths that differ only in the case of letters. Where file systems "
     "do not tell cases apart one of them takes the place of the other.",
     "Rename one of them."},
};

}  // namespace

std::span<const FindingInfo> addonFindings() {
  return kFindings;
}

}  // namespace addon::checks
