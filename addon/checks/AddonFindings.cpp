// SPDX-License-Identifier: MIT
#include "addon/checks/AddonFindings.h"

namespace addon::checks {
namespace {

constexpr FindingInfo kFindings[] = {
    {kMalformedDocument, "document is not well-formed",
     "A document of the add-on is not well-formed XML. The host cannot read any of it, not even "
     "what precedes the error.",
     "Correct the XML at the reported line, or rewrite the document with 'kraddon set'."},
    {kWrongRoot, "unexpected root element or namespace",
     "The name or namespace of the document's root element is not that of its kind. The host "
     "reads the document anyway, but other programs may mistake it for something else. If the "
     "name is wrong, the content is not checked.",
     "Give the root element the name and namespace from the message."},
    {kMissingElement, "required element missing or unusable",
     "An element is missing without which its document has no meaning: the identifier of the "
     "properties, the text of the license, the file of an app, or the description of a revision. "
     "Or the table of the file tree has an unusable entry, so that none of the files can be read.",
     "Add the element, or rewrite the document with 'kraddon set'."},
    {kUnknownElement, "unknown element or attribute",
     "A document has an element or attribute that the format does not define at this place. It is "
     "ignored when the document is read, and lost when the document is written again. Often it is "
     "a misspelled name.",
     "Correct the name, or remove the element or attribute."},
    {kWrongContentType, "document with the wrong content type",
     "The part does not have the content type of its kind of document. Readers that rely on "
     "content types do not find it, or reject it.",
     "Correct the content type, or rewrite the document with 'kraddon set'."},
    {kSeveralRelationships, "several relationships of one type",
     "The package has several relationships of a type that may occur only once. Since the right "
     "one cannot be determined, the document is treated as missing.",
     "Remove all of these relationships but one."},
    {kUnreachableDocument, "document without a relationship",
     "By its name or content type a part is a document of the add-on, but the package has no "
     "relationship of that type to it. Documents are found only by their relationships, so this "
     "one is never read.",
     "Add the relationship, or remove the part."},
    {kUnknownAddonType, "unknown add-on type",
     "The host's properties give the type of the add-on. The only known type is exactly 'Korvan "
     "Toolbox'; the host does not install anything else.",
     "Recreate the package with 'kraddon create', which writes that type."},
    {kNoName, "no name",
     "The add-on has no name: the title of the core properties is missing or blank. The host "
     "lists and installs add-ons by their name.",
     "Set a name with 'kraddon set PACKAGE properties name=NAME'."},
    {kNoVersion, "no version",
     "The add-on has no version, so it is impossible to tell whether an update is newer.",
     "Set a version with 'kraddon set PACKAGE properties version=VERSION'."},
    {kBadFlag, "flag is neither true nor false",
     "The only valid flags are 'true' and 'false', in lower case and without spaces. Everything "
     "else, such as '1' or 'yes', is read as 'false'.",
     "Write 'true' or 'false'."},
    {kBadExampleFile, "unknown or duplicate type of an example's file",
     "The files of an example have the type 'source', 'main', 'thumbnail' or 'image', and only "
     "'image' may occur more than once. A file of another type is ignored; of two files of one "
     "type, the last one is used.",
     "Correct the type, or remove the file from the example."},
    {kImageMismatch, "image does not match its type",
     "The first bytes of the screenshot are not those of an image of its content type. Programs "
     "that rely on the type show nothing, or an error.",
     "Save the image in the format that its extension says, and store it again with 'kraddon "
     "screenshot'."},
    {kDocumentTooLarge, "document too large or too deep",
     "Documents are read up to 64 MiB and 256 levels of elements, with limits on the number and "
     "size of attributes, so that no package can exhaust the memory of the host. For the same "
     "reason the table of the file tree may make at most 1,000 files and folders, one more for "
     "each byte of the package, and 2,000,000 in all. A document beyond these limits is not read "
     "at all.",
     "Make the document smaller, or leave out folders."},
    {kSeveralAuthors, "more than one author",
     "The properties name several authors. Only the first one is read, and the others are lost "
     "when the properties are written again.",
     "Put all names into the one author, or into the organization."},
    {kMissingPart, "missing part",
     "A relationship of the package leads to a document or the screenshot, but the part is not in "
     "the package. Reading the document fails, and some hosts treat the package as damaged.",
     "Add the part, or remove the relationship."},
    {kDocumentDoctypeOrEncoding, "document type declaration or unsupported encoding",
     "Documents must be UTF-8 or UTF-16, without a document type declaration, which could make "
     "readers open other files or exhaust their memory. Other documents are rejected.",
     "Save the document as UTF-8, without a '<!DOCTYPE' line."},
    {kMissingAppFile, "missing app file",
     "The file of an app is not in the package. The app cannot be installed.",
     "Add the file, or correct the path of the app; paths are relative to the top of the file "
     "tree, with '/'."},
    {kMissingExampleCode, "missing source or main file of an example",
     "A source or main file of an example is not in the package, so the example cannot be opened.",
     "Add the file, or correct its path in the example."},
    {kMissingExampleImage, "missing thumbnail or image of an example",
     "A thumbnail or image of an example is not in the package. The example can be opened, but is "
     "shown without it.",
     "Add the image, or remove it from the example."},
    {kMissingSearchPath, "missing search path",
     "The configuration adds a folder to the host's search path that is not in the package, or "
     "that is a file. The host warns about it at every start, and does not find the functions.",
     "Add the folder, or correct the path; '.' is the top of the file tree."},
    {kMissingClassPath, "missing Java class path",
     "The configuration adds a file or folder to the Java class path that is not in the package. "
     "Its classes cannot be loaded.",
     "Add the file, or remove it from the class path."},
    {kThumbnailDiffers, "screenshot and thumbnail differ",
     "Two relationships lead to the screenshot: the host's own, and the thumbnail, which other "
     "programs show. They lead to different parts, or there is no thumbnail.",
     "Store the screenshot again with 'kraddon screenshot', which writes both."},
    {kRevisionMismatch, "newest revision does not match the version",
     "The version of the newest revision is not that of the add-on. If all revisions have dates "
     "of the form YYYY-MM-DD, the newest is the one with the latest date; otherwise it may be the "
     "first or the last one.",
     "Add a revision for this version, or correct the version."},
    {kPathCase, "path in different case",
     "A path in a document and a path in the package differ only in the case of letters. This "
     "works on file systems that ignore case, and fails everywhere else.",
     "Write the path exactly as the file or folder is named."},
    {kPathOutside, "path leads out of the package",
     "A path in a document is absolute, or leaves the file tree with '..'. On another machine it "
     "names something else or nothing, and following it could reach files that do not belong to "
     "the add-on.",
     "Write a path that is relative to the top of the file tree."},
    {kDuplicateGuid, "duplicate GUID",
     "Two apps, or an app and the add-on, have the same GUID. Hosts identify them by it, so one "
     "replaces the other.",
     "Give each of them its own GUID; 'uuidgen' creates one."},
    {kFileOutsideTree, "item among the files is not a file of the tree",
     "An item is stored where the files are but is not one of them: another file has its path, its "
     "name cannot be decoded, it has no content type, or it holds relationships or a piece of a "
     "part. Or the table of the file tree gives the file another path. ZIP programs still unpack "
     "it as a file.",
     "Remove it with a ZIP program, or rename it."},
    {kNoLicense, "no license",
     "The add-on has no license, or one without text. Without terms it may not be used or shared, "
     "and many galleries do not accept it.",
     "Add one with 'kraddon set PACKAGE license type=TYPE text=TERMS', or as [license] to the "
     "manifest."},
    {kNoSummary, "no summary or description",
     "The add-on has no summary, the one line that lists show, or no description for its "
     "users.",
     "Set both with 'kraddon set PACKAGE properties summary=TEXT description=TEXT', or in the "
     "manifest."},
    {kNoAuthor, "no author or contact",
     "The add-on names no author, or no way to reach them. Users cannot ask questions or report "
     "problems.",
     "Set both with 'kraddon set PACKAGE properties authorName=NAME authorContact=ADDRESS', or "
     "'author' and 'contact' in the manifest."},
    {kNoScreenshot, "no screenshot",
     "The add-on has no screenshot. Hosts and galleries show a blank image instead.",
     "Add one with 'kraddon screenshot PACKAGE IMAGE', or as 'screenshot' to the manifest."},
    {kNotGuid, "not a GUID",
     "The add-on or one of its apps has no GUID, or one that is not of the form 8-4-4-4-12 "
     "hexadecimal digits. Hosts recognise add-ons by it across versions.",
     "Set a GUID, for example from 'uuidgen', and never change it."},
    {kOddVersion, "version is not numeric",
     "The version is not of the form N.N, N.N.N and so on. Hosts compare versions number by "
     "number, and cannot tell whether this one is newer than another.",
     "Write the version as two or more numbers separated by dots."},
    {kNotPortable, "name is not portable",
     "A file or folder has a name that some systems cannot store: a device name on Windows, one "
     "of the characters < > : \" | ? * \\, a control character, a dot or space at the end, or "
     "more than 255 bytes. The add-on cannot be installed there.",
     "Rename the file or folder."},
    {kExcludedFile, "file that builds leave out",
     "The file or folder is one that authors usually do not ship: files of version control, "
     "operating systems and editors, which are left out by default when an add-on is built.",
     "Remove it, or ignore this finding for its path if it belongs to the add-on."},
    {kSecret, "secret",
     "The file contains a private key, or a token of a cloud, forge, registry or chat service, or "
     "its name says that it is for passwords and keys: '.env' and the like, '.netrc', '.npmrc' and "
     "'.pypirc' with a password, '.aws/credentials', 'id_rsa' and the like, and key stores. "
     "Everyone who has the package can read it. Secrets stop a build.",
     "Remove the secret, and revoke it if the package was published; if it is meant to be public, "
     "allow it with \"KR509:PATH\" in 'ignore' under [verify] in the manifest, or with --ignore "
     "KR509:PATH."},
    {kLargeFile, "large file",
     "The file is larger than 10 MiB. Everyone who installs the add-on downloads it.",
     "Make the file smaller, or let users download it when they need it."},
    {kNoFiles, "no files", "The add-on has documents but no files. There is nothing to install.",
     "Add the add-on's files with 'kraddon add'."},
    {kDuplicateContent, "duplicate content",
     "Two files larger than 64 KiB have the same content. The package contains it twice.",
     "Keep one of the files, and refer to it from both places."},
    {kFutureTime, "entry time in the future",
     "The time of an entry is more than a day in the future. Tools that rely on times, such as "
     "builds and backups, consider the file changed or never update it.",
     "Correct the clock, or set new times when the package is built."},
    {kCaseClash, "paths that differ only in case",
     "Two files or folders have paths that differ only in the case of letters. On file systems "
     "that ignore case, one replaces the other.",
     "Rename one of them."},
    {kUntracked, "file that git does not track",
     "A file of the project goes into the package, but git does not track it. It may be there by "
     "mistake, and a build from a fresh checkout lacks it. Only 'build' looks for such files, in "
     "folders where git tracks others; files that 'files.add' of the manifest names are meant to "
     "be there.",
     "Add the file to git, exclude it, or ignore this finding for its path."},
};

}  // namespace

std::span<const FindingInfo> addonFindings() {
  return kFindings;
}

}  // namespace addon::checks
