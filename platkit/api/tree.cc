// The operations of nodal.h that read and write nodes: they check the caller's arguments and ask the current source.
#include "platkit/api/answer.h"
#include "platkit/catalogue.h"
#include "platkit/nodal.h"
#include "platkit/param_list.h"
#include "platkit/source.h"

namespace platkit {
namespace {

Arguments ArgumentsOf(const ParamList *list) { return list == nullptr ? Arguments() : list->params(); }

HVC_ReturnStatus CheckArguments(const Node &node, Arguments arguments, uint32_t expected) {
  if (arguments.size() != expected) return HVC_WRONG_COUNT;
  for (uint32_t i = 0; i < expected; ++i) {
    if (arguments[i].kind != node.arguments[i].kind) return HVC_WRONG_KIND;
  }
  return HVC_OK;
}

HVC_ReturnStatus FillInstanceList(uint32_t id, const ParamList *args, ParamList &list) {
  const Node *node = FindNode(id);
  if (node == nullptr) return HVC_NO_SUCH_NODE;
  if (!node->isList) return HVC_NOT_A_LIST;
  const Arguments arguments = ArgumentsOf(args);
  const HVC_ReturnStatus status = CheckArguments(*node, arguments, node->listArguments());
  if (status != HVC_OK) return status;
  return Answer([&] { return CurrentSource().List(*node, arguments, list); });
}

// A source knows the number of its instances, so callers' hints are not needed.
HVC_ReturnStatus MakeInstanceList(uint32_t id, const ParamList *args, ParamList **list) {
  if (list == nullptr) return HVC_BAD_PARAM;
  ParamList *instances = ParamList::Make();
  if (instances == nullptr) return HVC_NO_MEMORY;
  const HVC_ReturnStatus status = FillInstanceList(id, args, *instances);
  if (status == HVC_OK) {
    *list = instances;
  } else {
    instances->Destroy();
  }
  return status;
}

}  // namespace
}  // namespace platkit

using platkit::Arguments;
using platkit::Node;

extern "C" {

HVC_ReturnStatus NODAL_Get(uint32_t id, const NODAL_ParamList *args, void *record, uint32_t size) {
  if (record == nullptr) return HVC_BAD_PARAM;
  const Node *node = platkit::FindNode(id);
  if (node == nullptr) return HVC_NO_SUCH_NODE;
  if (!node->isRecord()) return HVC_NOT_A_RECORD;
  const Arguments arguments = platkit::ArgumentsOf(args);
  const HVC_ReturnStatus status = platkit::CheckArguments(*node, arguments, node->recordArguments());
  if (status != HVC_OK) return status;
  if (size != node->record->size) return HVC_WRONG_SIZE;
  const std::span<std::byte> bytes(static_cast<std::byte *>(record), size);
  return platkit::Answer([&] { return platkit::CurrentSource().Get(*node, arguments, bytes); });
}

HVC_ReturnStatus NODAL_Set(uint32_t id, const NODAL_ParamList *args, const NODAL_ParamList *input, void *output,
                           uint32_t outputSize) {
  const Node *node = platkit::FindNode(id);
  if (node == nullptr) return HVC_NO_SUCH_NODE;
  if (!node->isRecord()) return HVC_NOT_A_RECORD;
  if (input == nullptr || output != nullptr || outputSize != 0) return HVC_BAD_PARAM;
  const Arguments arguments = platkit::ArgumentsOf(args);
  const HVC_ReturnStatus status = platkit::CheckArguments(*node, arguments, node->recordArguments());
  if (status != HVC_OK) return status;
  return platkit::Answer([&] { return platkit::CurrentSource().Set(*node, arguments, input->params()); });
}

HVC_ReturnStatus NODAL_GetInstanceList(uint32_t id, const NODAL_ParamList *args, NODAL_ParamList *list) {
  if (list == nullptr || list == args) return HVC_BAD_PARAM;
  list->Clear();
  const HVC_ReturnStatus status = platkit::FillInstanceList(id, args, *list);
  if (status != HVC_OK) list->Clear();
  return status;
}

HVC_ReturnStatus NODAL_GetInstanceListAlloc(uint32_t id, const NODAL_ParamList *args, NODAL_ParamList **list) {
  return platkit::MakeInstanceList(id, args, list);
}

HVC_ReturnStatus NODAL_GetInstanceListAllocHint(uint32_t id, const NODAL_ParamList *args, uint32_t,
                                                NODAL_ParamList **list) {
  return platkit::MakeInstanceList(id, args, list);
}

}  // extern "C"
