// The descriptions of all records: kRecordLayout<Record>.
#ifndef PLATKIT_CATALOGUE_RECORDS_H
#define PLATKIT_CATALOGUE_RECORDS_H

#include "platkit/catalogue/client_records.h"
#include "platkit/catalogue/group_records.h"
#include "platkit/catalogue/hardware_records.h"
#include "platkit/catalogue/memory_records.h"
#include "platkit/catalogue/pmem_records.h"

#endif  // PLATKIT_CATALOGUE_RECORDS_H
