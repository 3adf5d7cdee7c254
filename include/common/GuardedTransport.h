#pragma once

#include <string>
#include <xmlrpc-c/client_transport.hpp>

// Looks through an XML-RPC document, reply or request, for a 64-bit integer that the XML-RPC library cannot
// survive: its report of an <i8> whose text is no number of 64 bits ends the process. True, with that text in
// `text`, when there is one. Also true, with "<!ENTITY" in `text`, for a document that declares entities of its
// own, since they can hide anything. Broken XML gives an answer too, but no promise: the library's parser refuses
// it by itself. Any thread; keeps nothing.
bool findUnreadableI8(const std::string& xml, std::string& text);

// A transport around another one that hands on only replies which the library's parser survives; a reply that fails
// findUnreadableI8 becomes a girerr::error, like any other bad reply. The thread of each call is the caller's.
class GuardedTransport : public xmlrpc_c::clientXmlTransport {
 public:
  // Shares ownership of the inner transport.
  explicit GuardedTransport(const xmlrpc_c::clientXmlTransportPtr& inner);

  void call(xmlrpc_c::carriageParm* const carriageParmP, std::string const& callXml,
            std::string* const responseXmlP) override;
  void setInterrupt(int* const interruptP) override;

 private:
  xmlrpc_c::clientXmlTransportPtr mInner;
};
