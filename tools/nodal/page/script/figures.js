// The host as the views show it: the consumption and the limits of its groups, machines and nodes.

const host = {};

const stats = (field) => `GroupMemoryStatsRecord.${field}`;
const allocation = (field) => `GroupAllocRecord.${field}`;
const vmm = (field) => `VmmMemoryStatsRecord.${field}`;
const swapInfo = (field) => `VmSwapInfoRecord.${field}`;
const world = (field) => `UwMemoryStatsRecord.${field}`;
const guest = (field) => `GuestStatsRecord.${field}`;
const whole = (field) => `ComprehensiveRecord.${field}`;

const flag = { vm: 4, userWorld: 8, systemWorld: 16, kernel: 512, container: 2048, vmmSubContainer: 8192 };

function openHost(data) {
  Object.assign(host, { data, host: new Family(data.families.host), states: new Family(data.families.state) });
  host.groups = new Family(data.families.group);
  host.buddies = new Family(data.families.buddy);
  host.pools = new Family(data.families.pool);
  host.heaps = new Family(data.families.heap);
  findMembers();
}

// Finds the machines, and the members of each group, that exist at the instant.
function findMembers() {
  host.members = membersOf(host.groups);
  host.machines = host.groups.rows().filter(isMachine);
}

// Returns the lists that could not be read at the instant, as [path, reason].
function unreadableLists() {
  const isNow = (bounds) => bounds.filter((bound) => bound <= now.instant).length % 2 === 1;
  return host.data.unreadableLists.filter(([, , bounds]) => !bounds || isNow(bounds));
}

// Returns the rows of the members of each group.
function membersOf(groups) {
  const members = Array.from({ length: groups.count }, () => []);
  for (const row of groups.rows()) members[groups.of('parent', row)]?.push(row);
  return members;
}

function hasFlag(row, bit) {
  return ((host.groups.value('GroupFlagsRecord.flags', row) ?? 0) & bit) !== 0;
}

function isMachine(row) {
  return host.groups.hasRecord('VmmMemoryStatsRecord', row);
}

function kindOf(row) {
  if (isMachine(row)) return 'virtual machine';
  if (row === 0) return 'host';
  if (hasFlag(row, flag.kernel)) return 'kernel';
  if (hasFlag(row, flag.vmmSubContainer)) return 'monitor';
  if (hasFlag(row, flag.userWorld)) return 'process';
  return host.members[row].length > 0 || hasFlag(row, flag.container) ? 'group' : 'world';
}

// Returns the rows from the host to the group.
function ancestry(row) {
  const path = [];
  for (let each = row; each >= 0; each = host.groups.of('parent', each)) path.unshift(each);
  return path;
}

function limitOf(row) {
  return host.groups.figure(allocation('max'), row);
}

// Returns the share of its limit that a group consumes, or undefined if it has no limit or its consumption is not
// available.
function nearness(row) {
  const limit = limitOf(row).value;
  const consumed = host.groups.value(stats('consumed'), row);
  return limit && consumed !== undefined ? consumed / limit : undefined;
}

// Returns the style that colours a group.
function nearnessClass(row) {
  if (host.groups.value(stats('consumed'), row) === undefined) return 'unknown';
  const part = nearness(row);
  if (part === undefined) return 'none';
  return part >= 0.95 ? 'at' : part >= 0.8 ? 'near' : part >= 0.6 ? 'half' : 'far';
}

// Returns the figure of the memory that a machine or a process has in swap, or undefined for other groups.
function swappedFigure(row) {
  const groups = host.groups;
  if (groups.hasRecord('VmSwapInfoRecord', row)) return groups.figure(swapInfo('swapped'), row);
  return groups.hasRecord('UwMemoryStatsRecord', row) ? groups.figure(world('swapped'), row) : undefined;
}

function sum(values) {
  return values.reduce((total, value) => total + (value ?? 0), 0);
}

// Returns the sum of the available values, or undefined if there are none.
function sumOfKnown(values) {
  const known = values.filter((value) => value !== undefined);
  return known.length > 0 ? sum(known) : undefined;
}

// Returns the memory that a machine's guest consumes on the host, as vm-stats shows it.
function guestConsumed(row) {
  const value = (field) => host.groups.value(vmm(field), row) ?? 0;
  const mapped = host.groups.value(vmm('mapped'), row);
  return mapped === undefined ? undefined : value('zipped') + mapped - value('sharedSaved') - value('zipSaved');
}

const blockKB = 4;
const orders = 19;

// Returns the free memory of a buddy allocator in blocks of at least this order.
function freeKB(row, order) {
  let kb = 0;
  for (let each = order; each < orders; ++each) kb += freeBlocks(row, each) * blockKB * 2 ** each;
  return kb;
}

function freeBlocks(row, order) {
  return host.buddies.value(`BuddyComprehensiveRecord.sizes[${order}].free`, row) ?? 0;
}

// Returns the NUMA nodes with the rows of their allocators, as {node, rows}. The node is null for allocators without a
// NUMA node.
function numaNodes() {
  const nodes = new Map();
  for (const row of host.buddies.rows()) {
    if (!host.buddies.hasRecord('BuddyComprehensiveRecord', row)) continue;
    const node = host.buddies.value('MemNodeRecord.numaNode', row) ?? null;
    nodes.set(node, [...(nodes.get(node) ?? []), row]);
  }
  return [...nodes].map(([node, rows]) => ({ node, rows }));
}
