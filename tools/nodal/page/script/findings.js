// Finds problems of the host. Each rule returns findings: {level, text, open} or {level, text, row}. `open` is a link
// to the figures of the finding; `row` is its group.

const thresholds = { limit: 0.95, squeezed: 0.05, fragmented: 0.245, heap: 0.05, growth: 64 << 20, swapped: 0.02, free: 65536 };

const rules = [
  { what: 'the memory state is soft, hard or low', find: findShortage },
  { what: 'a machine of whose memory 5 % or more are ballooned, compressed or swapped', find: findSqueezedMachines },
  { what: 'a group at 95 % or more of its limit', find: findGroupsAtLimit },
  { what: 'a node with 64 MB or more free, of which less than 25 % can become 2 MB pages', find: findFragmentedNodes },
  { what: 'a kernel heap with 5 % or more of the host\'s memory', find: findLargeHeaps },
  { what: 'a kernel heap that grew by 64 MB and to twice its size', find: findGrownHeaps },
  { what: 'a process with 2 % or more of the host\'s memory in swap', find: findSwappedProcesses },
  { what: 'figures that could not be read', find: findUnreadable },
];

function findings() {
  const order = ['bad', 'warning', 'note'];
  const found = rules.flatMap((rule) => rule.find());
  return found.sort((a, b) => order.indexOf(a.level) - order.indexOf(b.level));
}

function hostTotal() {
  return host.host.value(whole('total'), 0) ?? Infinity;
}

function findShortage() {
  const state = host.host.value('GlobalMemoryRecord.memState', 0);
  if (state === undefined || state < 2 || state >= host.states.count) return [];
  const text = `The host is short of memory: its state is “${host.states.name(state)}”.`;
  return [{ level: 'bad', text, open: '#overview' }];
}

function findSqueezedMachines() {
  const found = [];
  for (const row of host.machines) {
    const size = host.groups.value(vmm('memSize'), row);
    const parts = [
      ['swapped', swappedFigure(row)?.value ?? 0],
      ['compressed', host.groups.value(vmm('zipped'), row) ?? 0],
      ['ballooned', host.groups.value(vmm('ballooned'), row) ?? 0],
    ].filter(([, kb]) => kb > 0);
    const taken = sum(parts.map(([, kb]) => kb));
    if (!size || taken / size < thresholds.squeezed) continue;
    const words = parts.map(([word, kb]) => `${amountText(kb)} ${word}`).join(', ');
    const isSwapped = parts[0][0] === 'swapped' && parts[0][1] / size >= thresholds.squeezed;
    const level = isSwapped ? 'bad' : parts[0][0] === 'ballooned' ? 'note' : 'warning';
    const text = `Machine ${host.groups.name(row)} lacks ${percentText(taken / size)} of its ${amountText(size)}: ${words}.`;
    found.push({ level, text, open: `#machine-${row}`, weight: taken });
  }
  return largestFirst(found);
}

// Does not report a group below a reported group, because its limit may come from that group.
function findGroupsAtLimit() {
  const found = [];
  const told = new Set();
  for (const row of host.groups.rows()) {
    const part = nearness(row);
    const isToldAbove = ancestry(row).some((each) => each !== row && told.has(each));
    if (part === undefined || part < thresholds.limit || isToldAbove) continue;
    told.add(row);
    const limit = amountText(limitOf(row).value);
    const text = `${titleOf(row)} consumes ${percentText(part)} of its limit of ${limit}.`;
    found.push({ level: 'bad', text, row, weight: limitOf(row).value });
  }
  return largestFirst(found);
}

function findFragmentedNodes() {
  return numaNodes().filter(({ node }) => node !== null).flatMap(({ node, rows }) => {
    const free = sum(rows.map((row) => freeKB(row, 0)));
    const usable = sum(rows.map((row) => freeKB(row, 9)));
    if (free < thresholds.free || usable / free >= thresholds.fragmented) return [];
    const text = `Node ${node} is fragmented: of ${amountText(free)} free, ${percentText(usable / free)} can become 2 MB pages.`;
    return [{ level: 'warning', text, open: '#nodes' }];
  });
}

function findLargeHeaps() {
  const found = host.heaps.rows().flatMap((row) => {
    const kb = (host.heaps.value('HeapStatsRecord.size', row) ?? 0) / 1024;
    const part = kb / hostTotal();
    if (part < thresholds.heap) return [];
    const text = `Kernel heap ${host.heaps.name(row)} holds ${amountText(kb)}, ${percentText(part)} of the host's memory.`;
    return [{ level: 'warning', text, open: '#heaps', weight: kb }];
  });
  return largestFirst(found);
}

function findGrownHeaps() {
  if (!time.isSpan) return [];
  const size = 'HeapStatsRecord.size';
  const grown = changesBetween(host.heaps, size, 0, now.instant, Infinity)
    .filter(({ before, change }) => change >= Math.max(before, thresholds.growth));
  return grown.map(({ row, before, after }) => {
    const amounts = [before, after].map((bytes) => amountText(bytes / 1024));
    const text = `Kernel heap ${host.heaps.name(row)} grew from ${amounts[0]} to ${amounts[1]} since ${instantText(0)}.`;
    return { level: 'warning', text, open: '#heaps' };
  });
}

function findSwappedProcesses() {
  const found = host.groups.rows().filter((row) => !isMachine(row)).flatMap((row) => {
    const kb = swappedFigure(row)?.value ?? 0;
    if (kb / hostTotal() < thresholds.swapped) return [];
    return [{ level: 'warning', text: `${titleOf(row)} has ${amountText(kb)} in swap.`, row, weight: kb }];
  });
  return largestFirst(found);
}

function findUnreadable() {
  const reasons = new Map();
  const count = (what, reason) => {
    const key = `${what}: ${reason}`;
    reasons.set(key, (reasons.get(key) ?? 0) + 1);
  };
  for (const [path, reason] of unreadableLists()) {
    count(path.endsWith('/members/groups') ? 'Members of a group' : `The list ${path}`, reason);
  }
  for (const family of [host.host, host.states, host.groups, host.buddies, host.pools, host.heaps]) {
    for (const record of family.json.records) {
      for (const row of record.reasons.keys()) {
        const reason = family.isThere(row) && family.reason(record, row);
        if (reason) count(record.record, reason);
      }
    }
  }
  return [...reasons].map(([text, times]) => (
    { level: 'note', text: `Not readable: ${text}${times > 1 ? ` (${countText(times)} times)` : ''}.`, open: '#overview' }));
}

function largestFirst(found) {
  return found.sort((a, b) => b.weight - a.weight);
}

function titleOf(row) {
  const kind = kindOf(row);
  return `${kind[0].toUpperCase()}${kind.slice(1)} ${row === 0 ? '' : host.groups.name(row)}`.trim();
}
