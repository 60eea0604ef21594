// SPDX-License-Identifier: MIT
//
// Takes the place of Xerces-C's own network accessor where Xerces-C is linked statically. Packages
// come from strangers, and nothing that they say is ever fetched; without libcurl, and the forty
// libraries behind it, there is also nothing that could, and a program starts in a quarter of the
// time.
#include <xercesc/util/NetAccessors/Curl/CurlNetAccessor.hpp>
#include <xercesc/util/XMLExceptMsgs.hpp>
#include <xercesc/util/XMLNetAccessor.hpp>
#include <xercesc/util/XMLUniDefs.hpp>

XERCES_CPP_NAMESPACE_BEGIN

const XMLCh CurlNetAccessor::fgMyName[] = {chLatin_n, chLatin_o, chLatin_n, chLatin_e, chNull};

CurlNetAccessor::CurlNetAccessor() = default;
CurlNetAccessor::~CurlNetAccessor() = default;

void CurlNetAccessor::initCurl() {}
void CurlNetAccessor::cleanupCurl() {}

BinInputStream* CurlNetAccessor::makeNew(const XMLURL&, const XMLNetHTTPInfo*) {
  ThrowXML(NetAccessorException, XMLExcepts::NetAcc_InitFailed);
}

XERCES_CPP_NAMESPACE_END
