/*
 * Status codes of the hypervisor kernel.
 *
 * HVC_OK is success; every other code is a failure. The kernel's own codes are HVC_STATUS_BASE plus a number. Values
 * above HVC_STATUS_LAST_OWN belong to the service console; the library does not know their meaning.
 */
#ifndef PLATKIT_STATUS_H
#define PLATKIT_STATUS_H

#include <stdint.h>

typedef uint32_t HVC_ReturnStatus;

#define HVC_STATUS_BASE 0x0bad0000u
#define HVC_STATUS_LAST_OWN 0x2bacffffu

#ifdef __cplusplus
enum HVC_StatusCode : HVC_ReturnStatus
#else
enum HVC_StatusCode
#endif
{
  /* General */
  HVC_OK = 0,                            /* Success */
  HVC_FAILURE = 0x0bad0001,              /* Failure */
  HVC_WOULD_BLOCK = 0x0bad0002,          /* Would block */
  HVC_NOT_FOUND = 0x0bad0003,            /* Not found */
  HVC_BUSY = 0x0bad0004,                 /* Busy */
  HVC_ALREADY_EXISTS = 0x0bad0005,       /* Already exists */
  HVC_LIMIT_EXCEEDED = 0x0bad0006,       /* Limit exceeded */
  HVC_BAD_PARAM = 0x0bad0007,            /* Bad parameter */
  HVC_METADATA_READ_ERROR = 0x0bad0008,  /* Metadata read error */
  HVC_METADATA_WRITE_ERROR = 0x0bad0009, /* Metadata write error */
  HVC_IO_ERROR = 0x0bad000a,             /* I/O error */
  HVC_READ_ERROR = 0x0bad000b,           /* Read error */
  HVC_WRITE_ERROR = 0x0bad000c,          /* Write error */
  HVC_NO_PERMISSION = 0x0bad000d,        /* No permission */
  HVC_NOT_SUPPORTED = 0x0bad000e,        /* Not supported */
  HVC_READ_ONLY = 0x0bad000f,            /* Read-only */
  HVC_OUT_OF_RANGE = 0x0bad0010,         /* Value out of range */
  HVC_NAME_TOO_LONG = 0x0bad0011,        /* Name too long */
  HVC_CALL_INTERRUPTED = 0x0bad0012,     /* Call was interrupted */
  HVC_DEADLINE_MISSED = 0x0bad0013,      /* Deadline was missed */

  /* Memory and other resources that ran out */
  HVC_NO_MEMORY = 0x0bad0014,        /* Out of memory */
  HVC_NO_MACHINE_PAGES = 0x0bad0015, /* Out of machine pages */
  HVC_NO_ADDRESS_SPACE = 0x0bad0016, /* Out of kernel address space */
  HVC_NO_RESOURCES = 0x0bad0017,     /* Out of resources */

  /* System-information tree */
  HVC_NO_SUCH_NODE = 0x0bad0018,       /* No such system-information node */
  HVC_WRONG_COUNT = 0x0bad0019,        /* Wrong number of instance arguments */
  HVC_WRONG_KIND = 0x0bad001a,         /* Wrong kind of instance argument */
  HVC_WRONG_SIZE = 0x0bad001b,         /* Record size does not match */
  HVC_NOT_A_RECORD = 0x0bad001c,       /* Node is not a record */
  HVC_NOT_A_LIST = 0x0bad001d,         /* Node is not a list */
  HVC_NOT_A_SNAPSHOT = 0x0bad001e,     /* Not a system-information snapshot */
  HVC_SNAPSHOT_DAMAGED = 0x0bad001f,   /* Snapshot is damaged */
  HVC_SNAPSHOT_TOO_NEW = 0x0bad0020,   /* Snapshot format is newer than this library */
  HVC_DEFINITIONS_DIFFER = 0x0bad0021, /* System-information definitions differ */
  HVC_NODE_BUSY = 0x0bad0022,          /* System-information node is being updated */
  HVC_NODE_WITHDRAWN = 0x0bad0023,     /* System-information node was withdrawn */
  HVC_NODE_NOT_WRITABLE = 0x0bad0024,  /* System-information node takes no such value */
  HVC_TREE_LOCKED = 0x0bad0025,        /* System-information tree is locked */

  /* Memory and allocation */
  HVC_HEAP_EXHAUSTED = 0x0bad0026,        /* Heap reached its maximum size */
  HVC_HEAP_CORRUPTED = 0x0bad0027,        /* Heap bookkeeping is corrupted */
  HVC_HEAP_IN_USE = 0x0bad0028,           /* Heap still holds allocations */
  HVC_SLAB_EMPTY = 0x0bad0029,            /* Object cache has no free object */
  HVC_PAGE_RETIRED = 0x0bad002a,          /* Machine page was retired after an error */
  HVC_PAGE_NOT_MAPPED = 0x0bad002b,       /* Page is not mapped */
  HVC_PAGE_PINNED = 0x0bad002c,           /* Page is pinned */
  HVC_MAPPING_EXISTS = 0x0bad002d,        /* Address range is already mapped */
  HVC_UNALIGNED_ADDRESS = 0x0bad002e,     /* Address is not aligned */
  HVC_ADDRESS_TOO_HIGH = 0x0bad002f,      /* Address is beyond the reach of the device */
  HVC_NUMA_NODE_EMPTY = 0x0bad0030,       /* NUMA node has no memory left */
  HVC_NOT_INITIALIZED = 0x0bad0031,       /* Not initialized */
  HVC_RESERVATION_TOO_LARGE = 0x0bad0032, /* Memory reservation cannot be met */
  HVC_RELIABLE_MEMORY_SHORT = 0x0bad0033, /* Not enough reliable memory */
  HVC_BUDDY_OUT_OF_ORDER = 0x0bad0034,    /* No free buffer of that order */

  /* Page sharing */
  HVC_SHARE_HASH_MISMATCH = 0x0bad0035,  /* Page content changed while it was being shared */
  HVC_SHARE_TABLE_FULL = 0x0bad0036,     /* Page-sharing table is full */
  HVC_SHARE_REFS_SATURATED = 0x0bad0037, /* Shared page has too many references */
  HVC_SHARE_HINT_STALE = 0x0bad0038,     /* Page-sharing hint is out of date */
  HVC_PAGE_IS_SHARED = 0x0bad0039,       /* Page is shared */
  HVC_SALT_DIFFERS = 0x0bad003a,         /* Pages belong to different sharing domains */

  /* Swapping */
  HVC_SWAP_FULL = 0x0bad003b,               /* Swap space is full */
  HVC_SWAP_NOT_OPEN = 0x0bad003c,           /* Swap file is not open */
  HVC_SWAP_FILE_SHORT = 0x0bad003d,         /* Swap file is shorter than its map */
  HVC_SWAP_SLOT_FREE = 0x0bad003e,          /* Swap slot is not in use */
  HVC_SWAP_READ_FAILED = 0x0bad003f,        /* Swapped page could not be read back */
  HVC_SWAP_DISABLED = 0x0bad0040,           /* Swapping is turned off */
  HVC_SWAP_TARGET_UNREACHABLE = 0x0bad0041, /* Swap target cannot be reached */
  HVC_PAGE_BEING_SWAPPED = 0x0bad0042,      /* Page is on its way to swap */
  HVC_BALLOON_ABSENT = 0x0bad0043,          /* Guest has no balloon driver */
  HVC_BALLOON_STUCK = 0x0bad0044,           /* Balloon driver does not respond */

  /* Compression */
  HVC_ZIP_CACHE_FULL = 0x0bad0045,   /* Compression cache is full */
  HVC_ZIP_RATIO_POOR = 0x0bad0046,   /* Page does not compress well enough */
  HVC_ZIP_DATA_BAD = 0x0bad0047,     /* Compressed page does not unpack */
  HVC_ZIP_CACHE_FROZEN = 0x0bad0048, /* Compression cache is being resized */

  /* Large pages */
  HVC_LPAGE_NONE_FREE = 0x0bad0049,    /* No free large page */
  HVC_LPAGE_FRAGMENTED = 0x0bad004a,   /* Memory is too fragmented for a large page */
  HVC_LPAGE_PINNED_PART = 0x0bad004b,  /* Part of the large page is pinned */
  HVC_LPAGE_SWAPPED_PART = 0x0bad004c, /* Part of the large page is swapped */
  HVC_LPAGE_BROKEN = 0x0bad004d,       /* Large page was broken into small ones */
  HVC_LPAGE_POOL_CLOSED = 0x0bad004e,  /* Large-page pool is closed */
  HVC_LPAGE_MIXED_NODES = 0x0bad004f,  /* Large page would span two NUMA nodes */

  /* Scheduler groups and worlds */
  HVC_GROUP_NOT_EMPTY = 0x0bad0050,          /* Scheduler group is not empty */
  HVC_GROUP_TOO_DEEP = 0x0bad0051,           /* Scheduler-group hierarchy is too deep */
  HVC_GROUP_NAME_TAKEN = 0x0bad0052,         /* Scheduler-group name is taken */
  HVC_GROUP_DYING = 0x0bad0053,              /* Scheduler group is being removed */
  HVC_GROUP_IS_LEAF = 0x0bad0054,            /* Scheduler group cannot have members */
  HVC_GROUP_HAS_NO_LEADER = 0x0bad0055,      /* Scheduler group has no leader */
  HVC_PARENT_LIMIT_TOO_LOW = 0x0bad0056,     /* Limit of the parent group is too low */
  HVC_PARENT_RESERVATION_SHORT = 0x0bad0057, /* Parent group has too little reservation left */
  HVC_SHARES_OUT_OF_BOUNDS = 0x0bad0058,     /* Shares are outside the permitted bounds */
  HVC_WORLD_DEAD = 0x0bad0059,               /* World has ended */
  HVC_WORLD_NOT_STARTED = 0x0bad005a,        /* World has not started */
  HVC_WORLD_IS_RUNNING = 0x0bad005b,         /* World is running */
  HVC_WORLD_KILLED = 0x0bad005c,             /* World was killed */
  HVC_WORLD_TABLE_FULL = 0x0bad005d,         /* World table is full */
  HVC_WORLD_NOT_IN_GROUP = 0x0bad005e,       /* World is not a member of the group */
  HVC_AFFINITY_EMPTY = 0x0bad005f,           /* Affinity leaves no processor */
  HVC_ADMISSION_REFUSED = 0x0bad0060,        /* Admission check refused the request */
  HVC_SLEEP_WOKEN = 0x0bad0061,              /* Sleep ended early */
  HVC_STACK_EXHAUSTED = 0x0bad0062,          /* Kernel stack is exhausted */

  /* Locks and lists */
  HVC_LOCK_HELD = 0x0bad0063,           /* Lock is held */
  HVC_LOCK_NOT_HELD = 0x0bad0064,       /* Lock is not held by the caller */
  HVC_LOCK_RANK_VIOLATED = 0x0bad0065,  /* Lock was taken out of rank */
  HVC_DEADLOCK_AVOIDED = 0x0bad0066,    /* Deadlock was avoided */
  HVC_SEMAPHORE_DESTROYED = 0x0bad0067, /* Semaphore was destroyed while waited for */
  HVC_BARRIER_BROKEN = 0x0bad0068,      /* Barrier was broken */
  HVC_QUEUE_FULL = 0x0bad0069,          /* Queue is full */
  HVC_QUEUE_EMPTY = 0x0bad006a,         /* Queue is empty */
  HVC_QUEUE_CLOSED = 0x0bad006b,        /* Queue is closed */
  HVC_END_OF_LIST = 0x0bad006c,         /* End of list */
  HVC_LIST_CHANGED = 0x0bad006d,        /* List changed while it was read */
  HVC_NOT_ON_LIST = 0x0bad006e,         /* Element is not on the list */
  HVC_KEY_COLLISION = 0x0bad006f,       /* Two keys collide */
  HVC_REFCOUNT_UNDERFLOW = 0x0bad0070,  /* Reference count fell below zero */
  HVC_OBJECT_REFERENCED = 0x0bad0071,   /* Object is still referenced */
  HVC_HANDLE_STALE = 0x0bad0072,        /* Handle is stale */
  HVC_HANDLE_TABLE_FULL = 0x0bad0073,   /* Handle table is full */

  /* Interrupts, timers and deferred work */
  HVC_NO_INTERRUPT_VECTOR = 0x0bad0074, /* No free interrupt vector */
  HVC_INTERRUPT_STORM = 0x0bad0075,     /* Interrupt storm was detected */
  HVC_INTERRUPT_NOT_OURS = 0x0bad0076,  /* Interrupt belongs to another device */
  HVC_INTERRUPTS_OFF = 0x0bad0077,      /* Not possible while interrupts are off */
  HVC_TIMER_EXPIRED = 0x0bad0078,       /* Timer has expired */
  HVC_TIMER_PENDING = 0x0bad0079,       /* Timer is pending */
  HVC_TIMER_WHEEL_FULL = 0x0bad007a,    /* No free timer */
  HVC_CLOCK_UNSTABLE = 0x0bad007b,      /* Clock source is unstable */
  HVC_CLOCK_WENT_BACK = 0x0bad007c,     /* Clock went backwards */
  HVC_WORK_CANCELED = 0x0bad007d,       /* Deferred work was canceled */
  HVC_TIMED_OUT = 0x0bad007e,           /* Timed out */

  /* Devices and PCI */
  HVC_DEVICE_ABSENT = 0x0bad007f,             /* Device is absent */
  HVC_DEVICE_GONE = 0x0bad0080,               /* Device was removed */
  HVC_DEVICE_FAULTED = 0x0bad0081,            /* Device reported a fault */
  HVC_DEVICE_ASLEEP = 0x0bad0082,             /* Device is in a low-power state */
  HVC_DEVICE_CLAIMED = 0x0bad0083,            /* Device is claimed by another driver */
  HVC_DEVICE_NOT_OPEN = 0x0bad0084,           /* Device is not open */
  HVC_DEVICE_RESETTING = 0x0bad0085,          /* Device is being reset */
  HVC_DEVICE_RESET_FAILED = 0x0bad0086,       /* Device did not come back from its reset */
  HVC_NO_DRIVER = 0x0bad0087,                 /* No driver for the device */
  HVC_FIRMWARE_REFUSED = 0x0bad0088,          /* Device firmware refused the command */
  HVC_FIRMWARE_TOO_OLD = 0x0bad0089,          /* Device firmware is too old */
  HVC_PCI_CONFIG_SPACE_LOCKED = 0x0bad008a,   /* PCI configuration space is locked */
  HVC_PCI_NO_CAPABILITY = 0x0bad008b,         /* PCI capability is missing */
  HVC_PCI_BAR_UNASSIGNED = 0x0bad008c,        /* PCI base address register is not assigned */
  HVC_PCI_LINK_DOWN = 0x0bad008d,             /* PCI link is down */
  HVC_PCI_SLOT_EMPTY = 0x0bad008e,            /* PCI slot is empty */
  HVC_DMA_MAP_FULL = 0x0bad008f,              /* No room for another DMA mapping */
  HVC_DMA_ABORTED = 0x0bad0090,               /* DMA transfer was aborted */
  HVC_IOMMU_FAULT = 0x0bad0091,               /* IOMMU blocked an access */
  HVC_REGISTER_TIMEOUT = 0x0bad0092,          /* Device register did not change in time */
  HVC_PASSTHROUGH_REFUSED = 0x0bad0093,       /* Device cannot be passed through */
  HVC_VIRTUAL_FUNCTIONS_USED_UP = 0x0bad0094, /* All virtual functions are in use */

  /* Storage adapters and paths */
  HVC_ADAPTER_OFFLINE = 0x0bad0095,        /* Storage adapter is offline */
  HVC_ADAPTER_QUEUE_FULL = 0x0bad0096,     /* Storage adapter queue is full */
  HVC_TARGET_UNREACHABLE = 0x0bad0097,     /* Storage target is unreachable */
  HVC_TARGET_LOGGED_OUT = 0x0bad0098,      /* Storage target logged the host out */
  HVC_UNIT_NOT_READY = 0x0bad0099,         /* Logical unit is not ready */
  HVC_UNIT_RESERVED = 0x0bad009a,          /* Logical unit is reserved by another host */
  HVC_UNIT_REMOVED = 0x0bad009b,           /* Logical unit was removed for good */
  HVC_UNIT_CAPACITY_CHANGED = 0x0bad009c,  /* Capacity of the logical unit changed */
  HVC_UNIT_WRITE_PROTECTED = 0x0bad009d,   /* Logical unit is write-protected */
  HVC_ALL_PATHS_LOST = 0x0bad009e,         /* All paths are lost */
  HVC_PATH_DEAD = 0x0bad009f,              /* Path is dead */
  HVC_PATH_STANDBY = 0x0bad00a0,           /* Path is on standby */
  HVC_PATH_SWITCHED = 0x0bad00a1,          /* Path was switched during the request */
  HVC_PATH_LIMIT = 0x0bad00a2,             /* Too many paths to one device */
  HVC_SENSE_UNKNOWN = 0x0bad00a3,          /* Sense data was not understood */
  HVC_MEDIUM_ERROR = 0x0bad00a4,           /* Medium error */
  HVC_MEDIUM_ABSENT = 0x0bad00a5,          /* No medium in the drive */
  HVC_TAG_ABORTED = 0x0bad00a6,            /* Command was aborted */
  HVC_COMMAND_TOO_LONG = 0x0bad00a7,       /* Command descriptor is too long */
  HVC_TRANSFER_TRUNCATED = 0x0bad00a8,     /* Transfer ended short */
  HVC_BLOCK_SIZE_UNSUPPORTED = 0x0bad00a9, /* Block size is not supported */
  HVC_THIN_SPACE_LOW = 0x0bad00aa,         /* Thin-provisioned space is running low */
  HVC_THIN_SPACE_GONE = 0x0bad00ab,        /* Thin-provisioned space is used up */
  HVC_DATA_CHECK_FAILED = 0x0bad00ac,      /* Data integrity check failed */
  HVC_MIRROR_DEGRADED = 0x0bad00ad,        /* Mirror is degraded */

  /* File systems */
  HVC_FILE_NOT_OPEN = 0x0bad00ae,       /* File is not open */
  HVC_FILE_IS_OPEN = 0x0bad00af,        /* File is open */
  HVC_FILE_TOO_LARGE = 0x0bad00b0,      /* File is too large */
  HVC_IS_A_DIRECTORY = 0x0bad00b1,      /* Object is a directory */
  HVC_NOT_A_DIRECTORY = 0x0bad00b2,     /* Object is not a directory */
  HVC_DIRECTORY_NOT_EMPTY = 0x0bad00b3, /* Directory is not empty */
  HVC_PATH_TOO_LONG = 0x0bad00b4,       /* Path name is too long */
  HVC_TOO_MANY_LINKS = 0x0bad00b5,      /* Too many links */
  HVC_LINK_LOOP = 0x0bad00b6,           /* Symbolic links form a loop */
  HVC_CROSSES_VOLUMES = 0x0bad00b7,     /* Operation would cross volumes */
  HVC_NO_SPACE = 0x0bad00b8,            /* No space left */
  HVC_NO_FILE_DESCRIPTORS = 0x0bad00b9, /* No free file descriptors */
  HVC_OFFSET_PAST_END = 0x0bad00ba,     /* Offset is past the end of the file */
  HVC_HOLE_IN_FILE = 0x0bad00bb,        /* File has a hole there */
  HVC_UNKNOWN_FILE_SYSTEM = 0x0bad00bc, /* File system is not recognized */
  HVC_STALE_FILE = 0x0bad00bd,          /* File was replaced on the server */
  HVC_QUOTA_REACHED = 0x0bad00be,       /* Quota is used up */

  /* Volumes and locks on disk */
  HVC_VOLUME_NOT_MOUNTED = 0x0bad00bf,      /* Volume is not mounted */
  HVC_VOLUME_MOUNTED = 0x0bad00c0,          /* Volume is mounted */
  HVC_VOLUME_VERSION_UNKNOWN = 0x0bad00c1,  /* Volume version is unknown */
  HVC_VOLUME_LABEL_TAKEN = 0x0bad00c2,      /* Volume label is taken */
  HVC_VOLUME_IS_COPY = 0x0bad00c3,          /* Volume is a copy of another */
  HVC_VOLUME_PART_MISSING = 0x0bad00c4,     /* Part of the volume is missing */
  HVC_VOLUME_TOO_SMALL = 0x0bad00c5,        /* Volume is too small */
  HVC_HEARTBEAT_LOST = 0x0bad00c6,          /* Volume heartbeat was lost */
  HVC_HEARTBEAT_SLOTS_USED_UP = 0x0bad00c7, /* Volume has no free heartbeat slot */
  HVC_DISK_LOCK_HELD = 0x0bad00c8,          /* Disk lock is held by another host */
  HVC_DISK_LOCK_BROKEN = 0x0bad00c9,        /* Disk lock was broken */
  HVC_DISK_LOCK_CHANGED = 0x0bad00ca,       /* Disk lock changed owner */
  HVC_DISK_LOCK_CORRUPT = 0x0bad00cb,       /* Disk lock record is corrupt */
  HVC_JOURNAL_FULL = 0x0bad00cc,            /* Journal is full */
  HVC_JOURNAL_REPLAY_FAILED = 0x0bad00cd,   /* Journal could not be replayed */
  HVC_TRANSACTION_ABORTED = 0x0bad00ce,     /* Transaction was aborted */
  HVC_ALLOCATION_MAP_BAD = 0x0bad00cf,      /* Allocation map is inconsistent */
  HVC_POINTER_BLOCK_BAD = 0x0bad00d0,       /* Pointer block is inconsistent */
  HVC_PARTITION_TABLE_BAD = 0x0bad00d1,     /* Partition table is not valid */
  HVC_PARTITION_ABSENT = 0x0bad00d2,        /* No such partition */

  /* Networking */
  HVC_LINK_DOWN = 0x0bad00d3,              /* Network link is down */
  HVC_PORT_NOT_CONNECTED = 0x0bad00d4,     /* Switch port is not connected */
  HVC_PORT_TAKEN = 0x0bad00d5,             /* Switch port is taken */
  HVC_PORT_BLOCKED = 0x0bad00d6,           /* Switch port is blocked */
  HVC_PORTS_USED_UP = 0x0bad00d7,          /* Switch has no free port */
  HVC_SWITCH_ABSENT = 0x0bad00d8,          /* No such virtual switch */
  HVC_UPLINK_ABSENT = 0x0bad00d9,          /* Virtual switch has no uplink */
  HVC_VLAN_OUT_OF_RANGE = 0x0bad00da,      /* VLAN number is out of range */
  HVC_FRAME_TOO_LONG = 0x0bad00db,         /* Frame is too long */
  HVC_FRAME_DROPPED = 0x0bad00dc,          /* Frame was dropped */
  HVC_CHECKSUM_WRONG = 0x0bad00dd,         /* Checksum is wrong */
  HVC_NO_PACKET_BUFFERS = 0x0bad00de,      /* No free packet buffers */
  HVC_ADDRESS_IN_USE = 0x0bad00df,         /* Network address is in use */
  HVC_ADDRESS_UNAVAILABLE = 0x0bad00e0,    /* Network address is not available */
  HVC_ADDRESS_FAMILY_UNKNOWN = 0x0bad00e1, /* Address family is not supported */
  HVC_NO_ROUTE = 0x0bad00e2,               /* No route to host */
  HVC_HOST_UNREACHABLE = 0x0bad00e3,       /* Host is unreachable */
  HVC_CONNECTION_REFUSED = 0x0bad00e4,     /* Connection refused */
  HVC_CONNECTION_RESET = 0x0bad00e5,       /* Connection was reset by the peer */
  HVC_CONNECTION_ABORTED = 0x0bad00e6,     /* Connection was aborted */
  HVC_NOT_CONNECTED = 0x0bad00e7,          /* Not connected */
  HVC_ALREADY_CONNECTED = 0x0bad00e8,      /* Already connected */
  HVC_CONNECTING = 0x0bad00e9,             /* Connection is being established */
  HVC_SOCKET_SHUT_DOWN = 0x0bad00ea,       /* Socket was shut down */
  HVC_MESSAGE_TOO_LONG = 0x0bad00eb,       /* Message is too long */
  HVC_PROTOCOL_UNKNOWN = 0x0bad00ec,       /* Protocol is not supported */
  HVC_PROTOCOL_ERROR = 0x0bad00ed,         /* Peer violated the protocol */
  HVC_NAME_NOT_RESOLVED = 0x0bad00ee,      /* Host name was not resolved */
  HVC_FIREWALL_DENIED = 0x0bad00ef,        /* Firewall denied the connection */

  /* Migration and checkpoint */
  HVC_MIGRATION_CANCELED = 0x0bad00f0,         /* Migration was canceled */
  HVC_MIGRATION_IN_PROGRESS = 0x0bad00f1,      /* Migration is in progress */
  HVC_MIGRATION_NOT_STARTED = 0x0bad00f2,      /* No migration is in progress */
  HVC_MIGRATION_PEER_LOST = 0x0bad00f3,        /* Migration peer was lost */
  HVC_MIGRATION_PEER_REFUSED = 0x0bad00f4,     /* Migration peer refused the virtual machine */
  HVC_MIGRATION_PEER_TOO_OLD = 0x0bad00f5,     /* Migration peer is too old */
  HVC_MIGRATION_DIRTY_TOO_FAST = 0x0bad00f6,   /* Memory changes faster than it can be sent */
  HVC_MIGRATION_PAGE_MISSING = 0x0bad00f7,     /* Migrated page is missing */
  HVC_MIGRATION_SWITCH_OVER_LATE = 0x0bad00f8, /* Switch-over took too long */
  HVC_MIGRATION_LIMIT = 0x0bad00f9,            /* Too many migrations at once */
  HVC_CPU_FEATURES_DIFFER = 0x0bad00fa,        /* Processor features differ between the hosts */
  HVC_CHECKPOINT_VERSION = 0x0bad00fb,         /* Checkpoint version is not supported */
  HVC_CHECKPOINT_TRUNCATED = 0x0bad00fc,       /* Checkpoint is truncated */
  HVC_CHECKPOINT_STATE_BAD = 0x0bad00fd,       /* Checkpoint holds an impossible state */
  HVC_CHECKPOINT_BUFFER_SMALL = 0x0bad00fe,    /* Checkpoint buffer is too small */
  HVC_CHECKPOINT_NOT_ALLOWED = 0x0bad00ff,     /* Checkpoint is not possible now */
  HVC_RESTORE_FAILED = 0x0bad0100,             /* State could not be restored */

  /* Virtual machines and their monitors */
  HVC_VM_NOT_RUNNING = 0x0bad0101,         /* Virtual machine is not running */
  HVC_VM_SUSPENDED = 0x0bad0102,           /* Virtual machine is suspended */
  HVC_VM_POWERING_OFF = 0x0bad0103,        /* Virtual machine is powering off */
  HVC_VM_TABLE_FULL = 0x0bad0104,          /* Too many virtual machines */
  HVC_VM_MEMORY_LIMIT = 0x0bad0105,        /* Virtual machine is at its memory limit */
  HVC_VCPU_ABSENT = 0x0bad0106,            /* No such virtual processor */
  HVC_VCPU_LIMIT = 0x0bad0107,             /* Too many virtual processors */
  HVC_VCPU_STOPPED = 0x0bad0108,           /* Virtual processor is stopped */
  HVC_MONITOR_CRASHED = 0x0bad0109,        /* Monitor crashed */
  HVC_MONITOR_VERSION = 0x0bad010a,        /* Monitor version does not match the kernel */
  HVC_MONITOR_CALL_UNKNOWN = 0x0bad010b,   /* Monitor call is not known */
  HVC_MONITOR_CALL_ARGUMENT = 0x0bad010c,  /* Monitor call has a bad argument */
  HVC_MONITOR_ACTION_PENDING = 0x0bad010d, /* Monitor action is pending */
  HVC_GUEST_PAGE_INVALID = 0x0bad010e,     /* Guest page number is not valid */
  HVC_GUEST_PAGE_BACKED = 0x0bad010f,      /* Guest page is already backed */
  HVC_GUEST_TOOLS_ABSENT = 0x0bad0110,     /* Guest tools are not running */
  HVC_NESTING_UNSUPPORTED = 0x0bad0111,    /* Nested virtualization is not available */
  HVC_TRIPLE_FAULT = 0x0bad0112,           /* Guest processor shut down after a triple fault */
  HVC_OVERHEAD_LIMIT = 0x0bad0113,         /* Overhead memory limit was reached */
  HVC_REMAP_REJECTED = 0x0bad0114,         /* Page remap was rejected */

  /* Security and licensing */
  HVC_NOT_PRIVILEGED = 0x0bad0115,      /* Caller is not privileged */
  HVC_DOMAIN_DENIED = 0x0bad0116,       /* Security domain denies the access */
  HVC_LABEL_UNKNOWN = 0x0bad0117,       /* Security label is unknown */
  HVC_SIGNATURE_INVALID = 0x0bad0118,   /* Signature is not valid */
  HVC_SIGNATURE_MISSING = 0x0bad0119,   /* Signature is missing */
  HVC_CERTIFICATE_EXPIRED = 0x0bad011a, /* Certificate has expired */
  HVC_KEY_NOT_AVAILABLE = 0x0bad011b,   /* Encryption key is not available */
  HVC_KEY_REVOKED = 0x0bad011c,         /* Encryption key was revoked */
  HVC_DECRYPTION_FAILED = 0x0bad011d,   /* Decryption failed */
  HVC_MEASUREMENT_DIFFERS = 0x0bad011e, /* Measured boot value differs */
  HVC_TPM_UNAVAILABLE = 0x0bad011f,     /* Trusted platform module is not available */
  HVC_ENTROPY_SHORT = 0x0bad0120,       /* Not enough entropy */
  HVC_LICENSE_MISSING = 0x0bad0121,     /* No license for this feature */
  HVC_LICENSE_EXPIRED = 0x0bad0122,     /* License has expired */
  HVC_LICENSE_LIMIT = 0x0bad0123,       /* License limit was reached */

  /* Modules and linking */
  HVC_MODULE_LOADED = 0x0bad0124,            /* Module is already loaded */
  HVC_MODULE_NOT_LOADED = 0x0bad0125,        /* Module is not loaded */
  HVC_MODULE_IN_USE = 0x0bad0126,            /* Module is in use */
  HVC_MODULE_INIT_FAILED = 0x0bad0127,       /* Module did not initialize */
  HVC_MODULE_FORMAT = 0x0bad0128,            /* Module is not a valid object file */
  HVC_MODULE_WRONG_MACHINE = 0x0bad0129,     /* Module was built for another machine */
  HVC_MODULE_INTERFACE_VERSION = 0x0bad012a, /* Module needs another interface version */
  HVC_MODULE_PARAMETER = 0x0bad012b,         /* Module parameter is not known */
  HVC_SYMBOL_UNRESOLVED = 0x0bad012c,        /* Symbol is not resolved */
  HVC_SYMBOL_DUPLICATE = 0x0bad012d,         /* Symbol is defined twice */
  HVC_SYMBOL_NOT_EXPORTED = 0x0bad012e,      /* Symbol is not exported */
  HVC_RELOCATION_RANGE = 0x0bad012f,         /* Relocation is out of range */
  HVC_NAMESPACE_UNKNOWN = 0x0bad0130,        /* Symbol namespace is unknown */

  /* Debugging and tracing */
  HVC_DEBUGGER_ATTACHED = 0x0bad0131,   /* Debugger is attached */
  HVC_DEBUGGER_ABSENT = 0x0bad0132,     /* No debugger is attached */
  HVC_BREAKPOINTS_USED_UP = 0x0bad0133, /* No free breakpoint */
  HVC_TRACE_BUFFER_FULL = 0x0bad0134,   /* Trace buffer is full */
  HVC_TRACE_NOT_RUNNING = 0x0bad0135,   /* Tracing is not running */
  HVC_PROBE_REFUSED = 0x0bad0136,       /* Probe cannot be placed there */
  HVC_DUMP_TARGET_ABSENT = 0x0bad0137,  /* No target for a core dump */
  HVC_DUMP_TARGET_SMALL = 0x0bad0138,   /* Core-dump target is too small */
  HVC_DUMP_IN_PROGRESS = 0x0bad0139,    /* Core dump is in progress */
  HVC_ASSERTION_FAILED = 0x0bad013a,    /* Internal consistency check failed */
  HVC_FAULT_INJECTED = 0x0bad013b,      /* Fault was injected for a test */

  /* Power and processors */
  HVC_CPU_OFFLINE = 0x0bad013c,           /* Processor is offline */
  HVC_CPU_ABSENT = 0x0bad013d,            /* No such processor */
  HVC_CPU_FEATURE_ABSENT = 0x0bad013e,    /* Processor lacks a feature */
  HVC_CPU_MICROCODE_OLD = 0x0bad013f,     /* Processor microcode is too old */
  HVC_CPU_TOO_HOT = 0x0bad0140,           /* Processor was throttled for heat */
  HVC_MACHINE_CHECK = 0x0bad0141,         /* Machine check was raised */
  HVC_COUNTER_IN_USE = 0x0bad0142,        /* Performance counter is in use */
  HVC_COUNTER_OVERFLOWED = 0x0bad0143,    /* Performance counter overflowed */
  HVC_POWER_STATE_REFUSED = 0x0bad0144,   /* Power state is not possible */
  HVC_POWER_BUDGET_EXCEEDED = 0x0bad0145, /* Power budget is exceeded */
  HVC_SUSPEND_VETOED = 0x0bad0146,        /* Suspend was vetoed by a device */
  HVC_ON_BATTERY = 0x0bad0147,            /* Not possible on battery power */

  /* Persistent memory */
  HVC_PMEM_NOT_PRESENT = 0x0bad0148,       /* No persistent memory in the host */
  HVC_PMEM_VOLUME_NOT_CLEAN = 0x0bad0149,  /* Persistent-memory volume was not closed cleanly */
  HVC_PMEM_LABEL_BAD = 0x0bad014a,         /* Persistent-memory label area is not valid */
  HVC_PMEM_REGION_IN_USE = 0x0bad014b,     /* Persistent-memory region is in use */
  HVC_PMEM_REGION_LOCKED = 0x0bad014c,     /* Persistent-memory region is locked */
  HVC_PMEM_REGION_TABLE_FULL = 0x0bad014d, /* Persistent-memory region table is full */
  HVC_PMEM_BLOCKS_SHORT = 0x0bad014e,      /* Not enough persistent-memory blocks */
  HVC_PMEM_EXTENT_POISONED = 0x0bad014f,   /* Persistent-memory extent holds poisoned lines */
  HVC_PMEM_FLUSH_FAILED = 0x0bad0150,      /* Persistent memory could not be flushed */
  HVC_PMEM_INTERLEAVE_BROKEN = 0x0bad0151, /* Persistent-memory interleave set is incomplete */
  HVC_PMEM_DIMM_ALERT = 0x0bad0152,        /* Persistent-memory module raised an alert */

  /* Service console and user interface */
  HVC_CONSOLE_NOT_READY = 0x0bad0153,      /* Console is not ready */
  HVC_CONSOLE_CLOSED = 0x0bad0154,         /* Console was closed */
  HVC_CONSOLE_CALL_UNKNOWN = 0x0bad0155,   /* Console call is not known */
  HVC_CONSOLE_BUFFER_SMALL = 0x0bad0156,   /* Console buffer is too small */
  HVC_TERMINAL_HUNG_UP = 0x0bad0157,       /* Terminal hung up */
  HVC_KEYMAP_UNKNOWN = 0x0bad0158,         /* Keyboard map is unknown */
  HVC_VIDEO_MODE_UNSUPPORTED = 0x0bad0159, /* Video mode is not supported */
  HVC_LOG_FULL = 0x0bad015a,               /* Log is full */
  HVC_LOG_ROTATED = 0x0bad015b,            /* Log was rotated while it was read */
  HVC_CONFIG_OPTION_UNKNOWN = 0x0bad015c,  /* Configuration option is unknown */
  HVC_CONFIG_VALUE_REJECTED = 0x0bad015d,  /* Configuration value was rejected */
  HVC_CONFIG_NEEDS_REBOOT = 0x0bad015e,    /* Configuration takes effect after a reboot */
  HVC_SHUTTING_DOWN = 0x0bad015f,          /* Host is shutting down */
  HVC_REBOOT_REQUIRED = 0x0bad0160,        /* Host must be rebooted first */

  /* Other codes */
  HVC_INVALID_ERROR_CODE = 0x0bad0161, /* Invalid error code */
  HVC_CONSOLE_ERROR = 0x0bad0162       /* Generic service console error */
};

#endif /* PLATKIT_STATUS_H */
