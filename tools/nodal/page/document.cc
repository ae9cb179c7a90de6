#include "tools/nodal/page/document.h"

#include <sodium.h>

#include "platkit/version.h"
#include "tools/nodal/page/compression.h"
#include "tools/nodal/page/html.h"
#include "tools/nodal/page/page_json.h"
#include "tools/nodal/page/page_sources.h"
#include "tools/nodal/page/static_icicle.h"
#include "tools/nodal/page/static_tables.h"

namespace nodal {
namespace {

std::string HashSource(std::string_view text) {
  std::string digest(crypto_hash_sha256_BYTES, '\0');
  crypto_hash_sha256(reinterpret_cast<unsigned char *>(digest.data()),
                     reinterpret_cast<const unsigned char *>(text.data()), text.size());
  return "'sha256-" + Base64(digest) + "'";
}

// Trusted types make the browser refuse text as HTML.
std::string Policy() {
  return "default-src 'none'; script-src " + HashSource(kPageScript) + "; style-src " + HashSource(kPageStyle) +
         "; base-uri 'none'; form-action 'none'; require-trusted-types-for 'script'; trusted-types 'none'";
}

std::string NameOf(const PageData &data) { return HtmlText(data.host.empty() ? "host without a name" : data.host); }

std::string Part(const PageData &data, std::string_view name) {
  if (name == "policy") return Policy();
  if (name == "style") return std::string(kPageStyle);
  if (name == "script") return std::string(kPageScript);
  if (name == "data") return CompressedBase64(PageJson(data));
  if (name == "version") return PLATKIT_VERSION;
  if (name == "host") return NameOf(data);
  if (name == "time") return HtmlText(data.time.empty() ? "at an unknown time" : data.time);
  if (name == "source") return HtmlText(data.source);
  if (name == "state") return StaticState(data);
  if (name == "memory") return StaticMemory(data);
  if (name == "icicle") return StaticIcicle(data.groups);
  if (name == "groups") return StaticGroups(data);
  if (name == "machines") return StaticMachines(data);
  if (name == "nodes") return StaticNodes(data);
  return StaticHeaps(data);
}

}  // namespace

std::string Document(const PageData &data) {
  return Filled(kPageTemplate, [&data](std::string_view name) { return Part(data, name); });
}

}  // namespace nodal
