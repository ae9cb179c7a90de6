// The tables of a page for readers without scripts, as HTML. Scripts replace them.
#ifndef NODAL_PAGE_STATIC_TABLES_H
#define NODAL_PAGE_STATIC_TABLES_H

#include <string>

#include "tools/nodal/page/page_data.h"

namespace nodal {

std::string StaticState(const PageData &data);
std::string StaticMemory(const PageData &data);
std::string StaticGroups(const PageData &data);
std::string StaticMachines(const PageData &data);
std::string StaticNodes(const PageData &data);
std::string StaticHeaps(const PageData &data);

}  // namespace nodal

#endif  // NODAL_PAGE_STATIC_TABLES_H
