// The C interface: checks what callers hand in, and asks the source of the day.
#include <memory>

#include "platkit/catalogue.h"
#include "platkit/linux/linux_source.h"
#include "platkit/nodal.h"
#include "platkit/param_list.h"
#include "platkit/snapshot/snapshot_source.h"
#include "platkit/source.h"

namespace platkit {
namespace {

std::unique_ptr<Source> currentSource;

Source &CurrentSource() {
  if (currentSource == nullptr) currentSource = OpenLinuxHost("/");
  return *currentSource;
}

Arguments ArgumentsOf(const ParamList *list) { return list == nullptr ? Arguments() : list->params(); }

HVC_ReturnStatus CheckArguments(const Node &node, Arguments arguments, uint32_t expected) {
  if (arguments.size() != expected) return HVC_WRONG_COUNT;
  for (uint32_t i = 0; i < expected; ++i) {
    if (arguments[i].kind != node.arguments[i].kind) return HVC_WRONG_KIND;
  }
  return HVC_OK;
}

template <typename T>
HVC_ReturnStatus GetInteger(const ParamList *list, uint32_t index, T *value) {
  if (list == nullptr || value == nullptr) return HVC_BAD_PARAM;
  if (index >= list->params().size()) return HVC_NOT_FOUND;
  const NODAL_Param &param = list->params()[index];
  if (param.kind != ParamKind::kInt) return HVC_WRONG_KIND;
  if (param.integer != static_cast<T>(param.integer)) return HVC_OUT_OF_RANGE;
  *value = static_cast<T>(param.integer);
  return HVC_OK;
}

HVC_ReturnStatus FillInstanceList(uint32_t id, const ParamList *args, ParamList &list) {
  const Node *node = FindNode(id);
  if (node == nullptr) return HVC_NO_SUCH_NODE;
  if (!node->isList) return HVC_NOT_A_LIST;
  const Arguments arguments = ArgumentsOf(args);
  const HVC_ReturnStatus status = CheckArguments(*node, arguments, node->listArguments());
  return status != HVC_OK ? status : CurrentSource().List(*node, arguments, list);
}

// Sources know the number of their instances themselves, so that nobody needs a caller's hint.
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

HVC_ReturnStatus OpenSource(const char *path, uint32_t flags, std::unique_ptr<Source> &source) {
  switch (flags) {
    case NODAL_CACHE_SNAPSHOT: return OpenSnapshot(path, source);
    case NODAL_CACHE_ROOT_FOLDER: return OpenSavedRoot(path, Writes::kRefused, source);
    case NODAL_CACHE_ROOT_FOLDER | NODAL_CACHE_WRITABLE: return OpenSavedRoot(path, Writes::kTaken, source);
    default: return HVC_BAD_PARAM;
  }
}

}  // namespace

void UseSource(std::unique_ptr<Source> source) { currentSource = std::move(source); }

}  // namespace platkit

using platkit::Arguments;
using platkit::Node;
using platkit::ParamKind;

extern "C" {

NODAL_ParamList *NODAL_ParamListCreate(uint32_t kind, uint32_t capacity) {
  if (kind != NODAL_LIST_INPUT && kind != NODAL_LIST_INSTANCES) return nullptr;
  static_cast<void>(capacity);  // a new list has room for more than any caller asks for
  return NODAL_ParamList::Make();
}

NODAL_ParamList *NODAL_ParamListCreateAndAllocateParams(uint32_t kind, uint32_t count, uint32_t bytes) {
  if (kind != NODAL_LIST_INPUT && kind != NODAL_LIST_INSTANCES) return nullptr;
  return NODAL_ParamList::MakeFixed(count, bytes);
}

void NODAL_ParamListDestroy(NODAL_ParamList *list) {
  if (list != nullptr) list->Destroy();
}

HVC_ReturnStatus NODAL_ParamListAddInt(NODAL_ParamList *list, int64_t value) {
  return list == nullptr ? HVC_BAD_PARAM : list->Add(value);
}

HVC_ReturnStatus NODAL_ParamListAddString(NODAL_ParamList *list, const char *text) {
  return list == nullptr || text == nullptr ? HVC_BAD_PARAM : list->Add(std::string_view(text));
}

HVC_ReturnStatus NODAL_ParamListRemoveLastParam(NODAL_ParamList *list) {
  return list == nullptr ? HVC_BAD_PARAM : list->RemoveLast();
}

uint32_t NODAL_ParamListUsedCount(const NODAL_ParamList *list) {
  return list == nullptr ? 0 : static_cast<uint32_t>(list->params().size());
}

HVC_ReturnStatus NODAL_ParamListGetInt64(const NODAL_ParamList *list, uint32_t index, int64_t *value) {
  return platkit::GetInteger(list, index, value);
}

HVC_ReturnStatus NODAL_ParamListGetInt32(const NODAL_ParamList *list, uint32_t index, int32_t *value) {
  return platkit::GetInteger(list, index, value);
}

HVC_ReturnStatus NODAL_ParamListGetUInt32(const NODAL_ParamList *list, uint32_t index, uint32_t *value) {
  return platkit::GetInteger(list, index, value);
}

HVC_ReturnStatus NODAL_ParamListGetString(const NODAL_ParamList *list, uint32_t index, const char **text) {
  if (list == nullptr || text == nullptr) return HVC_BAD_PARAM;
  if (index >= list->params().size()) return HVC_NOT_FOUND;
  const NODAL_Param &param = list->params()[index];
  if (param.kind != ParamKind::kText) return HVC_WRONG_KIND;
  *text = param.chars;
  return HVC_OK;
}

const NODAL_Param *NODAL_ParamListGetParam(const NODAL_ParamList *list, uint32_t index) {
  return list == nullptr || index >= list->params().size() ? nullptr : &list->params()[index];
}

int64_t NODAL_ParamGetInt(const NODAL_Param *param) {
  return param == nullptr || param->kind != ParamKind::kInt ? 0 : param->integer;
}

HVC_ReturnStatus NODAL_Get(uint32_t id, const NODAL_ParamList *args, void *record, uint32_t size) {
  if (record == nullptr) return HVC_BAD_PARAM;
  const Node *node = platkit::FindNode(id);
  if (node == nullptr) return HVC_NO_SUCH_NODE;
  if (!node->isRecord()) return HVC_NOT_A_RECORD;
  const Arguments arguments = platkit::ArgumentsOf(args);
  const HVC_ReturnStatus status = platkit::CheckArguments(*node, arguments, node->recordArguments());
  if (status != HVC_OK) return status;
  if (size != node->record->size) return HVC_WRONG_SIZE;
  return platkit::CurrentSource().Get(*node, arguments, {static_cast<std::byte *>(record), size});
}

HVC_ReturnStatus NODAL_Set(uint32_t id, const NODAL_ParamList *args, const NODAL_ParamList *input, void *output,
                           uint32_t outputSize) {
  const Node *node = platkit::FindNode(id);
  if (node == nullptr) return HVC_NO_SUCH_NODE;
  if (!node->isRecord()) return HVC_NOT_A_RECORD;
  if (input == nullptr || output != nullptr || outputSize != 0) return HVC_BAD_PARAM;
  const Arguments arguments = platkit::ArgumentsOf(args);
  const HVC_ReturnStatus status = platkit::CheckArguments(*node, arguments, node->recordArguments());
  return status != HVC_OK ? status : platkit::CurrentSource().Set(*node, arguments, input->params());
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

HVC_ReturnStatus NODAL_UseCache(const char *path, uint32_t flags) {
  if (path == nullptr) return HVC_BAD_PARAM;
  std::unique_ptr<platkit::Source> source;
  const HVC_ReturnStatus status = platkit::OpenSource(path, flags, source);
  if (status == HVC_OK) platkit::UseSource(std::move(source));
  return status;
}

HVC_ReturnStatus NODAL_CheckSig(char *kernelBuild, uint32_t size, const char **ownBuild) {
  if (kernelBuild == nullptr || size == 0 || ownBuild == nullptr) return HVC_BAD_PARAM;
  const platkit::Definitions &own = platkit::OwnDefinitions();
  const platkit::Definitions &read = platkit::CurrentSource().definitions();
  const size_t length = read.build.copy(kernelBuild, size - 1);
  kernelBuild[length] = '\0';
  *ownBuild = own.build.c_str();
  return read.signature == own.signature ? HVC_OK : HVC_DEFINITIONS_DIFFER;
}

}  // extern "C"
