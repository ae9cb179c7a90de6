#include "tools/nodal/page/document.h"

#include <sodium.h>

#include "platkit/version.h"
#include "tools/nodal/page/compression.h"
#include "tools/nodal/page/html.h"
#include "tools/nodal/page/page_json.h"
#include "tools/nodal/page/page_sources.h"
#include "tools/nodal/page/span_json.h"
#include "tools/nodal/page/static_icicle.h"
#include "tools/nodal/page/static_span.h"
#include "tools/nodal/page/static_tables.h"

namespace nodal {
namespace {

// With this limit, a page of 1,000 groups by minute over a day has less than 1 MB.
constexpr size_t kMaxValueBytes = 840'000;

std::string HashSource(std::string_view text) {
  std::string digest(crypto_hash_sha256_BYTES, '\0');
  crypto_hash_sha256(reinterpret_cast<unsigned char *>(digest.data()),
                     reinterpret_cast<const unsigned char *>(text.data()), text.size());
  return "'sha256-" + Base64(digest) + "'";
}

// Trusted types make the browser refuse to parse text as HTML.
std::string Policy() {
  return "default-src 'none'; script-src " + HashSource(kPageScript) + "; style-src " + HashSource(kPageStyle) +
         "; base-uri 'none'; form-action 'none'; require-trusted-types-for 'script'; trusted-types 'none'";
}

std::string NameOf(const PageData &data) { return HtmlText(data.host.empty() ? "host without a name" : data.host); }

// The parts that depend on whether the page has a span.
struct Parts {
  std::string data;
  std::string values = {};
  std::string navigation = {};
  std::string span = {};
};

std::string Part(const PageData &data, const Parts &parts, std::string_view name) {
  if (name == "policy") return Policy();
  if (name == "style") return std::string(kPageStyle);
  if (name == "script") return std::string(kPageScript);
  if (name == "data") return parts.data;
  if (name == "values") return parts.values;
  if (name == "navigation") return parts.navigation;
  if (name == "span") return parts.span;
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

std::string DocumentOf(const PageData &data, const Parts &parts) {
  return Filled(kPageTemplate, [&](std::string_view name) { return Part(data, parts, name); });
}

std::string SpanSection(const PageSpan &span) {
  const std::string title = Element("h2", "Over time", " id=\"time-title\"");
  return Element("section", title + Element("div", StaticSpan(span), " class=\"body\""),
                 " id=\"lanes\" aria-labelledby=\"time-title\"") +
         "\n";
}

}  // namespace

std::string Document(const PageData &data) { return DocumentOf(data, {.data = CompressedBase64(PageJson(data))}); }

std::string SpanDocument(const PageSpan &span, const PageData &last) {
  const PackedSpan packed = Packed(span, kMaxValueBytes);
  return DocumentOf(
      last, {.data = CompressedBase64(SpanJson(span, last, packed.tolerance)),
             .values = Element("script", packed.values, " type=\"application/octet-stream\" id=\"values\"") + "\n",
             .navigation = "<li><a href=\"#lanes\">Time</a></li>\n",
             .span = SpanSection(span)});
}

}  // namespace nodal
