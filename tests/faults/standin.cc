// A scripted stand-in for libplatkit. It is loaded before libplatkit into an unchanged kestrel.
//
// It implements the whole C interface without the library's code: its node identifiers count downwards, and the script
// describes its host. Every call except Warning and Str_Strcpy writes a line to the log, with node names instead of
// identifiers:
//
//   NODAL_ParamListCreate(1, 2) = list1
//   NODAL_ParamListAddInt(list1, 4) = 0
//   NODAL_Get(sched_groups_groupName, [4], 64) = 0
//
// Lists are numbered in the order of their creation and kept to the end of the run, so that a use after
// NODAL_ParamListDestroy appears as a line that begins with "misuse:".
//
// The script has these lines:
//
//   record <node> <arguments> <bytes in hexadecimal>
//   list <node> <arguments> <instance>...
//   fail <operation, or *> <node, or *> <which call, from 1; 0: each> <status> [answers]
//   short-records
//   cache <path>
//   signature <status> "<kernel's build text>" "<own build text>"
//   unit <segment> <bus> <slot> <function>
//   traffic <event> <amount>...
//   clock <seconds since 1970>
//
// with arguments written as in the log. A text instance is in quotes, or null for a null text. A later record or list
// replaces an earlier one. The node of a call on a list of instances is the one that the list was read from. A call
// that returns a pointer fails with null. With "answers", a failing call still fills its output. With "short-records",
// a record that is shorter than the output leaves the rest of the output unchanged; otherwise its size is an error.
//
// A unit line adds event counters behind the configuration registers of a PCI function. The traffic lines after it set
// the numbers of events that they count (see uncore.h).
//
// With a clock, the stand-in also implements and logs time, localtime and sleep. Its time advances only in sleep, which
// returns at once. If time or localtime fails, the status in the script is an error number.
#include <dlfcn.h>
#include <fcntl.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <fstream>
#include <iomanip>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "platkit/nodal.h"
#include "platkit/str.h"
#include "platkit/warning.h"
#include "tests/faults/uncore.h"

struct NODAL_Param {
  bool isText = false;
  int64_t integer = 0;
  std::optional<std::string> text = {};  // no value: a null pointer

  std::string Written() const {
    if (!isText) return std::to_string(integer);
    return text ? '"' + *text + '"' : "null";
  }
};

struct NODAL_ParamList {
  unsigned number;
  std::string node = {};  // the node whose instances the list contains
  uint32_t room = UINT32_MAX;
  bool destroyed = false;
  std::deque<NODAL_Param> params = {};  // a deque: pointers stay valid as the list grows
};

namespace {

// Identifiers count downwards from here, in the order of the catalogue.
constexpr uint16_t kFirstNode = 60000;

constexpr char kConfigRegister[] = "hardware_pci_seg_bus_slot_func_pciConfigReg_size_addr";

enum Row : uint16_t {
#define PLATKIT_NODE(name, path, entry, record) kRow_##name,
#include "platkit/catalogue/nodes.def"
};

constexpr const char *kNodeNames[] = {
#define PLATKIT_NODE(name, path, entry, record) #name,
#include "platkit/catalogue/nodes.def"
};

std::string NodeName(uint32_t id) {
  const uint32_t row = kFirstNode - id;
  return row < std::size(kNodeNames) ? kNodeNames[row] : "node#" + std::to_string(id);
}

struct Fault {
  std::string operation;
  std::string node;
  unsigned call;
  HVC_ReturnStatus status;
  bool answers = false;
  unsigned seen = 0;
};

using Key = std::pair<std::string, std::string>;  // node and arguments

std::string FromHex(const std::string &digits) {
  std::string bytes;
  for (size_t i = 0; i + 1 < digits.size(); i += 2) {
    bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
  }
  return bytes;
}

// A library that lists null texts also takes them as arguments; others refuse them.
bool listsNullTexts = false;

NODAL_Param ToInstance(const std::string &word) {
  if (word == "null") {
    listsNullTexts = true;
    return {.isText = true};
  }
  if (word.front() == '"') return {.isText = true, .text = word.substr(1, word.size() - 2)};
  return {.integer = std::stoll(word)};
}

class Standin {
 public:
  Standin() {
    const char *log = std::getenv("STANDIN_LOG");
    const char *script = std::getenv("STANDIN_SCRIPT");
    if (log == nullptr || script == nullptr) std::abort();
    log_ = std::fopen(log, "ae");
    if (log_ == nullptr) std::abort();
    std::ifstream lines(script);
    for (std::string line; std::getline(lines, line);)
      Learn(line);
  }

  NODAL_ParamList *MakeList() {
    lists_.push_back({.number = static_cast<unsigned>(lists_.size() + 1)});
    known_.insert(&lists_.back());
    return &lists_.back();
  }

  // The status of this call in the script; 0 if it succeeds.
  HVC_ReturnStatus FaultOf(const std::string &operation, const std::string &node, bool *answers = nullptr) {
    HVC_ReturnStatus status = 0;
    for (Fault &fault : faults_) {
      if (fault.operation != "*" && fault.operation != operation) continue;
      if (fault.node != "*" && fault.node != node) continue;
      ++fault.seen;
      if (fault.call != 0 && fault.call != fault.seen) continue;
      status = fault.status;
      if (answers != nullptr) *answers = fault.answers;
    }
    return status;
  }

  const std::string *Record(const std::string &node, const std::string &arguments) const {
    const auto found = records_.find({node, arguments});
    return found == records_.end() ? nullptr : &found->second;
  }

  bool allowsShortRecords() const { return allowsShortRecords_; }

  const std::vector<NODAL_Param> *Instances(const std::string &node, const std::string &arguments) const {
    const auto found = instances_.find({node, arguments});
    return found == instances_.end() ? nullptr : &found->second;
  }

  bool HasCache(const std::string &path) const {
    return std::find(caches_.begin(), caches_.end(), path) != caches_.end();
  }

  faults::Uncore &uncore() { return uncore_; }
  bool HasClock() const { return clock_ != kNoClock; }
  time_t &clock() { return clock_; }

  HVC_ReturnStatus signature() const { return signature_; }
  const std::string &kernelBuild() const { return kernelBuild_; }
  const std::string &ownBuild() const { return ownBuild_; }

  void Log(const std::string &line) const {
    if (std::fprintf(log_, "%s\n", line.c_str()) < 0) std::abort();
  }

  // Returns whether a list may be used. If not, logs a misuse.
  bool Usable(const NODAL_ParamList *list, const std::string &operation) const {
    const bool known = known_.contains(list);
    if (!known) {
      Log("misuse: " + operation + " of a list that was never made");
    } else if (list->destroyed) {
      Log("misuse: " + operation + " of list" + std::to_string(list->number) + ", which is destroyed");
    }
    return known && !list->destroyed;
  }

 private:
  void Learn(const std::string &line) {
    std::istringstream words(line);
    std::string kind, node, arguments, word;
    words >> kind;
    if (kind == "short-records") {
      allowsShortRecords_ = true;
    } else if (kind == "record") {
      words >> node >> arguments >> word;
      records_[{node, arguments}] = FromHex(word);
    } else if (kind == "list") {
      words >> node >> arguments;
      std::vector<NODAL_Param> &instances = instances_[{node, arguments}];
      instances.clear();
      while (words >> word)
        instances.push_back(ToInstance(word));
    } else if (kind == "fail") {
      Fault fault{};
      words >> fault.operation >> fault.node >> fault.call >> std::hex >> fault.status;
      fault.answers = (words >> word) && word == "answers";
      faults_.push_back(fault);
    } else if (kind == "cache") {
      words >> std::ws;
      std::getline(words, word);
      caches_.push_back(word);
    } else if (kind == "signature") {
      words >> std::hex >> signature_ >> std::quoted(kernelBuild_) >> std::quoted(ownBuild_);
    } else if (kind == "unit") {
      faults::Uncore::Address address{};
      for (int64_t &number : address)
        words >> number;
      uncore_.AddUnit(address);
    } else if (kind == "traffic") {
      uint32_t event = 0;
      words >> event;
      std::vector<uint64_t> amounts;
      for (uint64_t amount = 0; words >> amount;)
        amounts.push_back(amount);
      uncore_.AddTraffic(event, amounts);
    } else if (kind == "clock") {
      words >> clock_;
    } else {
      Log("misuse: the script says " + line);
    }
  }

  static constexpr time_t kNoClock = -1;

  std::FILE *log_;  // flushed when the program ends or its buffer is full
  std::deque<NODAL_ParamList> lists_;
  std::unordered_set<const NODAL_ParamList *> known_;
  std::map<Key, std::string> records_;
  bool allowsShortRecords_ = false;
  std::map<Key, std::vector<NODAL_Param>> instances_;
  std::vector<Fault> faults_;
  std::vector<std::string> caches_;
  HVC_ReturnStatus signature_ = 0;
  std::string kernelBuild_ = "stand-in";
  std::string ownBuild_ = "stand-in";
  faults::Uncore uncore_;
  time_t clock_ = kNoClock;
};

// Created at the first call and never destroyed, since calls may come while the process exits.
Standin &TheStandin() {
  static Standin &standin = *new Standin;
  return standin;
}

std::string Name(const NODAL_ParamList *list) {
  return list == nullptr ? "null" : "list" + std::to_string(list->number);
}

std::string Written(const NODAL_ParamList *arguments) {
  std::string text = "[";
  if (arguments != nullptr) {
    for (const NODAL_Param &param : arguments->params)
      text += (text.size() > 1 ? "," : "") + param.Written();
  }
  return text + "]";
}

std::string Written(HVC_ReturnStatus status) {
  if (status == 0) return "0";
  char text[16];
  std::snprintf(text, sizeof text, "%#010x", status);
  return text;
}

HVC_ReturnStatus Logged(const std::string &call, HVC_ReturnStatus status) {
  TheStandin().Log(call + " = " + Written(status));
  return status;
}

NODAL_ParamList *NewList(const char *operation, const std::string &call, uint32_t room) {
  NODAL_ParamList *list = nullptr;
  if (TheStandin().FaultOf(operation, "") == 0) {
    list = TheStandin().MakeList();
    list->room = room;
  }
  TheStandin().Log(call + " = " + Name(list));
  return list;
}

HVC_ReturnStatus Add(const char *operation, NODAL_ParamList *list, const NODAL_Param &param) {
  const std::string call = std::string(operation) + "(" + Name(list) + ", " + param.Written() + ")";
  if (!TheStandin().Usable(list, operation)) return Logged(call, HVC_BAD_PARAM);
  const HVC_ReturnStatus fault = TheStandin().FaultOf(operation, list->node);
  if (fault != 0) return Logged(call, fault);
  if (list->params.size() >= list->room) return Logged(call, HVC_LIMIT_EXCEEDED);
  list->params.push_back(param);
  return Logged(call, 0);
}

// Finds the parameter for a getter.
HVC_ReturnStatus Find(const char *operation, const NODAL_ParamList *list, uint32_t index, bool isText,
                      const NODAL_Param *&param) {
  const std::string call = std::string(operation) + "(" + Name(list) + ", " + std::to_string(index) + ")";
  if (!TheStandin().Usable(list, operation)) return Logged(call, HVC_BAD_PARAM);
  bool answers = true;
  const HVC_ReturnStatus fault = TheStandin().FaultOf(operation, list->node, &answers);
  if (!answers) return Logged(call, fault);
  if (index >= list->params.size()) return Logged(call, HVC_NOT_FOUND);
  if (list->params[index].isText != isText) return Logged(call, HVC_WRONG_KIND);
  param = &list->params[index];
  return Logged(call, fault);
}

template <typename T>
HVC_ReturnStatus GetInteger(const char *operation, const NODAL_ParamList *list, uint32_t index, T *value) {
  const NODAL_Param *param = nullptr;
  const HVC_ReturnStatus status = Find(operation, list, index, false, param);
  if (param != nullptr) *value = static_cast<T>(param->integer);
  return status;
}

// Reads a list node, and logs the number of the list that it fills.
HVC_ReturnStatus ReadInstances(const char *operation, uint32_t id, const NODAL_ParamList *args, const std::string &hint,
                               NODAL_ParamList **list) {
  Standin &standin = TheStandin();
  const std::string node = NodeName(id);
  const std::string arguments = Written(args);
  const std::string call = std::string(operation) + "(" + node + ", " + arguments + hint + ")";
  if (args != nullptr && !standin.Usable(args, operation)) return Logged(call, HVC_BAD_PARAM);
  const HVC_ReturnStatus fault = standin.FaultOf(operation, node);
  if (fault != 0) return Logged(call, fault);
  const std::vector<NODAL_Param> *instances = standin.Instances(node, arguments);
  if (instances == nullptr) return Logged(call, HVC_NOT_FOUND);
  if (*list == nullptr) *list = standin.MakeList();
  if (instances->size() > (*list)->room) return Logged(call, HVC_LIMIT_EXCEEDED);
  (*list)->node = node;
  (*list)->params.assign(instances->begin(), instances->end());
  standin.Log(call + " = 0 " + Name(*list));
  return 0;
}

HVC_ReturnStatus ReadIntoNewList(const char *operation, uint32_t id, const NODAL_ParamList *args,
                                 const std::string &hint, NODAL_ParamList **list) {
  NODAL_ParamList *made = nullptr;
  const HVC_ReturnStatus status = ReadInstances(operation, id, args, hint, &made);
  if (status == 0) *list = made;
  return status;
}

// Returns true if the arguments name a 32-bit register in a configuration space, and sets its address and offset.
bool IsRegister(const NODAL_ParamList *args, faults::Uncore::Address &address, int64_t &offset) {
  if (args == nullptr || args->params.size() != 6 || args->params[4].integer != 4) return false;
  for (size_t i = 0; i < address.size(); ++i)
    address[i] = args->params[i].integer;
  offset = args->params[5].integer;
  return true;
}

HVC_ReturnStatus ReadRegister(const NODAL_ParamList *args, void *record, uint32_t size) {
  faults::Uncore::Address address;
  int64_t offset = 0;
  uint32_t value = 0;
  if (!IsRegister(args, address, offset) || !TheStandin().uncore().Read(address, offset, value)) return HVC_NOT_FOUND;
  if (size != sizeof value) return HVC_WRONG_SIZE;
  std::memcpy(record, &value, size);
  return 0;
}

HVC_ReturnStatus WriteRegister(const NODAL_ParamList *args, const NODAL_ParamList *input) {
  faults::Uncore::Address address;
  int64_t offset = 0;
  if (input->params.size() != 1) return HVC_WRONG_COUNT;
  const auto value = static_cast<uint32_t>(input->params[0].integer);
  return IsRegister(args, address, offset) && TheStandin().uncore().Write(address, offset, value) ? HVC_OK
                                                                                                  : HVC_NOT_FOUND;
}

// The original function, which the stand-in's function of this name replaces.
template <typename Function>
Function *Hidden(const char *name) {
  return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

// Logs a call. Returns false and sets errno if the script makes the call fail.
bool Succeeds(const std::string &operation, const std::string &arguments) {
  const HVC_ReturnStatus error = TheStandin().FaultOf(operation, "");
  TheStandin().Log(operation + "(" + arguments + ")" + (error == 0 ? "" : " fails"));
  if (error != 0) errno = static_cast<int>(error);
  return error == 0;
}

}  // namespace

extern "C" {

#define PLATKIT_NODE(name, path, entry, record) const uint16_t NODAL_NODE_##name = kFirstNode - kRow_##name;
#include "platkit/catalogue/nodes.def"

NODAL_ParamList *NODAL_ParamListCreate(uint32_t kind, uint32_t capacity) {
  return NewList("NODAL_ParamListCreate",
                 "NODAL_ParamListCreate(" + std::to_string(kind) + ", " + std::to_string(capacity) + ")", UINT32_MAX);
}

NODAL_ParamList *NODAL_ParamListCreateAndAllocateParams(uint32_t kind, uint32_t count, uint32_t bytes) {
  return NewList("NODAL_ParamListCreateAndAllocateParams",
                 "NODAL_ParamListCreateAndAllocateParams(" + std::to_string(kind) + ", " + std::to_string(count) +
                     ", " + std::to_string(bytes) + ")",
                 count);
}

void NODAL_ParamListDestroy(NODAL_ParamList *list) {
  TheStandin().Log("NODAL_ParamListDestroy(" + Name(list) + ")");
  if (list != nullptr && TheStandin().Usable(list, "NODAL_ParamListDestroy")) list->destroyed = true;
}

HVC_ReturnStatus NODAL_ParamListAddInt(NODAL_ParamList *list, int64_t value) {
  return Add("NODAL_ParamListAddInt", list, {.integer = value});
}

HVC_ReturnStatus NODAL_ParamListAddString(NODAL_ParamList *list, const char *text) {
  NODAL_Param param{.isText = true};
  if (text != nullptr) param.text = text;
  if (text == nullptr && !listsNullTexts) {
    return Logged("NODAL_ParamListAddString(" + Name(list) + ", null)", HVC_BAD_PARAM);
  }
  return Add("NODAL_ParamListAddString", list, param);
}

HVC_ReturnStatus NODAL_ParamListRemoveLastParam(NODAL_ParamList *list) {
  const std::string call = "NODAL_ParamListRemoveLastParam(" + Name(list) + ")";
  if (!TheStandin().Usable(list, "NODAL_ParamListRemoveLastParam")) return Logged(call, HVC_BAD_PARAM);
  const HVC_ReturnStatus fault = TheStandin().FaultOf("NODAL_ParamListRemoveLastParam", list->node);
  if (fault != 0) return Logged(call, fault);
  if (list->params.empty()) return Logged(call, HVC_NOT_FOUND);
  list->params.pop_back();
  return Logged(call, 0);
}

uint32_t NODAL_ParamListUsedCount(const NODAL_ParamList *list) {
  const bool usable = list != nullptr && TheStandin().Usable(list, "NODAL_ParamListUsedCount");
  const size_t count = usable ? list->params.size() : 0;
  TheStandin().Log("NODAL_ParamListUsedCount(" + Name(list) + ") = " + std::to_string(count));
  return static_cast<uint32_t>(count);
}

HVC_ReturnStatus NODAL_ParamListGetInt64(const NODAL_ParamList *list, uint32_t index, int64_t *value) {
  return GetInteger("NODAL_ParamListGetInt64", list, index, value);
}

HVC_ReturnStatus NODAL_ParamListGetInt32(const NODAL_ParamList *list, uint32_t index, int32_t *value) {
  return GetInteger("NODAL_ParamListGetInt32", list, index, value);
}

HVC_ReturnStatus NODAL_ParamListGetUInt32(const NODAL_ParamList *list, uint32_t index, uint32_t *value) {
  return GetInteger("NODAL_ParamListGetUInt32", list, index, value);
}

HVC_ReturnStatus NODAL_ParamListGetString(const NODAL_ParamList *list, uint32_t index, const char **text) {
  const NODAL_Param *param = nullptr;
  const HVC_ReturnStatus status = Find("NODAL_ParamListGetString", list, index, true, param);
  if (param != nullptr) *text = param->text ? param->text->c_str() : nullptr;
  return status;
}

const NODAL_Param *NODAL_ParamListGetParam(const NODAL_ParamList *list, uint32_t index) {
  const NODAL_Param *param = nullptr;
  if (TheStandin().Usable(list, "NODAL_ParamListGetParam") &&
      TheStandin().FaultOf("NODAL_ParamListGetParam", list->node) == 0 && index < list->params.size()) {
    param = &list->params[index];
  }
  TheStandin().Log("NODAL_ParamListGetParam(" + Name(list) + ", " + std::to_string(index) +
                   ") = " + (param == nullptr ? "null" : param->Written()));
  return param;
}

int64_t NODAL_ParamGetInt(const NODAL_Param *param) {
  const int64_t value = param == nullptr ? 0 : param->integer;
  TheStandin().Log("NODAL_ParamGetInt() = " + std::to_string(value));
  return value;
}

HVC_ReturnStatus NODAL_Get(uint32_t id, const NODAL_ParamList *args, void *record, uint32_t size) {
  Standin &standin = TheStandin();
  const std::string node = NodeName(id);
  const std::string arguments = Written(args);
  const std::string call = "NODAL_Get(" + node + ", " + arguments + ", " + std::to_string(size) + ")";
  if (args != nullptr && !standin.Usable(args, "NODAL_Get")) return Logged(call, HVC_BAD_PARAM);
  bool answers = true;
  const HVC_ReturnStatus fault = standin.FaultOf("NODAL_Get", node, &answers);
  if (!answers) return Logged(call, fault);
  const std::string *bytes = standin.Record(node, arguments);
  if (bytes == nullptr && node == kConfigRegister) {
    const HVC_ReturnStatus status = ReadRegister(args, record, size);
    return Logged(call, fault == 0 ? status : fault);
  }
  if (bytes == nullptr) return Logged(call, HVC_NOT_FOUND);
  const bool fits = bytes->size() == size || (bytes->size() < size && standin.allowsShortRecords());
  if (!fits) return Logged(call, HVC_WRONG_SIZE);
  std::memcpy(record, bytes->data(), bytes->size());
  return Logged(call, fault);
}

HVC_ReturnStatus NODAL_Set(uint32_t id, const NODAL_ParamList *args, const NODAL_ParamList *input, void *output,
                           uint32_t outputSize) {
  Standin &standin = TheStandin();
  const std::string node = NodeName(id);
  const std::string call = "NODAL_Set(" + node + ", " + Written(args) + ", " + Written(input) + ", " +
                           (output == nullptr ? "null" : "output") + ", " + std::to_string(outputSize) + ")";
  if ((args != nullptr && !standin.Usable(args, "NODAL_Set")) || !standin.Usable(input, "NODAL_Set")) {
    return Logged(call, HVC_BAD_PARAM);
  }
  const HVC_ReturnStatus fault = standin.FaultOf("NODAL_Set", node);
  if (fault == 0 && node == kConfigRegister) return Logged(call, WriteRegister(args, input));
  return Logged(call, fault);
}

HVC_ReturnStatus NODAL_GetInstanceList(uint32_t node, const NODAL_ParamList *args, NODAL_ParamList *list) {
  if (!TheStandin().Usable(list, "NODAL_GetInstanceList")) return HVC_BAD_PARAM;
  list->params.clear();
  return ReadInstances("NODAL_GetInstanceList", node, args, "", &list);
}

HVC_ReturnStatus NODAL_GetInstanceListAlloc(uint32_t node, const NODAL_ParamList *args, NODAL_ParamList **list) {
  return ReadIntoNewList("NODAL_GetInstanceListAlloc", node, args, "", list);
}

HVC_ReturnStatus NODAL_GetInstanceListAllocHint(uint32_t node, const NODAL_ParamList *args, uint32_t hint,
                                                NODAL_ParamList **list) {
  return ReadIntoNewList("NODAL_GetInstanceListAllocHint", node, args, ", " + std::to_string(hint), list);
}

HVC_ReturnStatus NODAL_UseCache(const char *path, uint32_t flags) {
  const std::string call = std::string("NODAL_UseCache(") + path + ", " + std::to_string(flags) + ")";
  const HVC_ReturnStatus fault = TheStandin().FaultOf("NODAL_UseCache", "");
  if (fault != 0) return Logged(call, fault);
  return Logged(call, TheStandin().HasCache(path) ? HVC_OK : HVC_NOT_FOUND);
}

// Like other libraries, may fill the buffer completely, without a terminator.
HVC_ReturnStatus NODAL_CheckSig(char *kernelBuild, uint32_t size, const char **ownBuild) {
  Standin &standin = TheStandin();
  const HVC_ReturnStatus fault = standin.FaultOf("NODAL_CheckSig", "");
  std::strncpy(kernelBuild, standin.kernelBuild().c_str(), size);
  *ownBuild = standin.ownBuild().c_str();
  return Logged("NODAL_CheckSig(" + std::to_string(size) + ")", fault != 0 ? fault : standin.signature());
}

void Warning(const char *format, ...) {
  const int savedErrno = errno;
  std::fflush(stdout);
  va_list arguments;
  va_start(arguments, format);
  std::vfprintf(stderr, format, arguments);
  va_end(arguments);
  errno = savedErrno;
}

char *Str_Strcpy(char *destination, const char *source, size_t size) {
  if (size == 0) return destination;
  const size_t length = strnlen(source, size - 1);
  std::memcpy(destination, source, length);
  destination[length] = '\0';
  return destination;
}

PLATKIT_EXPORT time_t time(time_t *result) noexcept {
  if (!TheStandin().HasClock()) return Hidden<time_t(time_t *)>("time")(result);
  if (!Succeeds("time", "")) return -1;
  if (result != nullptr) *result = TheStandin().clock();
  return TheStandin().clock();
}

PLATKIT_EXPORT tm *localtime(const time_t *moment) noexcept {
  if (TheStandin().HasClock() && !Succeeds("localtime", std::to_string(*moment))) return nullptr;
  return Hidden<tm *(const time_t *)>("localtime")(moment);
}

PLATKIT_EXPORT unsigned sleep(unsigned seconds) {
  if (!TheStandin().HasClock()) return Hidden<unsigned(unsigned)>("sleep")(seconds);
  TheStandin().Log("sleep(" + std::to_string(seconds) + ")");
  TheStandin().clock() += seconds;
  TheStandin().uncore().PassPeriod();
  return 0;
}

}  // extern "C"
