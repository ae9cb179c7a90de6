// The operations on parameter lists in nodal.h.
#include "platkit/param_list.h"

#include "platkit/api/answer.h"
#include "platkit/nodal.h"

namespace {

using platkit::ParamKind;

template <typename T>
HVC_ReturnStatus GetInteger(const NODAL_ParamList *list, uint32_t index, T *value) {
  if (list == nullptr || value == nullptr) return HVC_BAD_PARAM;
  if (index >= list->params().size()) return HVC_NOT_FOUND;
  const NODAL_Param &param = list->params()[index];
  if (param.kind != ParamKind::kInt) return HVC_WRONG_KIND;
  if (param.integer != static_cast<T>(param.integer)) return HVC_OUT_OF_RANGE;
  *value = static_cast<T>(param.integer);
  return HVC_OK;
}

}  // namespace

extern "C" {

NODAL_ParamList *NODAL_ParamListCreate(uint32_t kind, uint32_t capacity) {
  if (kind != NODAL_LIST_INPUT && kind != NODAL_LIST_INSTANCES) return nullptr;
  static_cast<void>(capacity);  // only a hint
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
  if (list == nullptr) return HVC_BAD_PARAM;
  return platkit::Answer([&] { return list->Add(value); });
}

HVC_ReturnStatus NODAL_ParamListAddString(NODAL_ParamList *list, const char *text) {
  if (list == nullptr || text == nullptr) return HVC_BAD_PARAM;
  return platkit::Answer([&] { return list->Add(std::string_view(text)); });
}

HVC_ReturnStatus NODAL_ParamListRemoveLastParam(NODAL_ParamList *list) {
  return list == nullptr ? HVC_BAD_PARAM : list->RemoveLast();
}

uint32_t NODAL_ParamListUsedCount(const NODAL_ParamList *list) {
  return list == nullptr ? 0 : static_cast<uint32_t>(list->params().size());
}

HVC_ReturnStatus NODAL_ParamListGetInt64(const NODAL_ParamList *list, uint32_t index, int64_t *value) {
  return GetInteger(list, index, value);
}

HVC_ReturnStatus NODAL_ParamListGetInt32(const NODAL_ParamList *list, uint32_t index, int32_t *value) {
  return GetInteger(list, index, value);
}

HVC_ReturnStatus NODAL_ParamListGetUInt32(const NODAL_ParamList *list, uint32_t index, uint32_t *value) {
  return GetInteger(list, index, value);
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

}  // extern "C"
