// Hosts to test the page with, in the JSON form of `nodal build`.

const GB = 1024 * 1024; // in KB
const flags = { container: 0x800, process: 0x8a, machine: 0x40c, monitor: 0x3002, kernel: 0x203 };
const none = -1;

// Collects the nodes of one host.
class HostBuilder {
  constructor(name) {
    this.json = { format: 1, host: name, time: '2026-03-14T09:26:53Z', nodes: {} };
    this.members = new Map();
  }

  set(path, value) {
    this.json.nodes[path] = value;
  }

  group(id, name, parent, { kind = 'container', consumed = 0, min = 0, max = none, effective = min, tag = '', ...more } = {}) {
    const at = `/sched/groups/${id}`;
    this.set(`${at}/groupName`, { name });
    this.set(`${at}/groupTag`, { tag });
    this.set(`${at}/parentGroupID`, { parentGroupID: parent });
    this.set(`${at}/groupFlags`, { flags: flags[kind] });
    this.set(`${at}/memAllocationInKB`, { min, max, shares: 0, minLimit: none });
    this.set(`${at}/stats/capacity`, { consumedResv: 0, availResv: 0 });
    this.set(`${at}/stats/memoryStats`, { consumed, memSize: consumed, touched: none, bMin: min, bMax: max, eMin: effective,
      allocTgt: max, consumedPeak: consumed, memSizePeak: consumed, throttlePct: 100, ...more });
    this.members.set(id, []);
    this.members.get(parent)?.push(id);
  }

  process(id, name, parent, consumed, uw = {}) {
    this.group(id, name, parent, { kind: 'process', consumed });
    this.set(`/sched/groups/${id}/groupLeaderID`, { leaderID: id });
    this.set(`/sched/memClients/${id}/kestrel/uw`, { min: 0, max: none, minLimit: none, memSizeLimit: -1, memSize: 2 * consumed,
      touched: none, mapped: consumed, memBStore: consumed, swapped: 0, ...uw });
  }

  machine(id, name, parent, { memSize, mapped, shared = 0, ballooned = 0, zipped = 0, swapped = 0, needed = none, ...group }) {
    const monitor = 20000000 + id;
    this.group(id, name, parent, { kind: 'machine', consumed: mapped, ...group });
    this.set(`/sched/groups/${id}/groupLeaderID`, { leaderID: id });
    this.set(`/sched/memClients/${id}/kestrel/vmm`, { memSizeLimit: memSize, memSize, touched: none, mapped, shared,
      sharedSaved: shared, ballooned, balloonActive: ballooned > 0 ? 1 : 0, balloonTgt: none, zipped, zipSaved: Math.floor(zipped / 2) });
    this.set(`/sched/memClients/${id}/kestrel/guest`, { memTotal: memSize - ballooned, lpageTotal: none, memNeeded: needed });
    this.set(`/worldGroups/${id}/vmmLeaderID`, { vmmLeaderID: monitor });
    this.set(`/sched/memClients/${monitor}/swapInfo`, { swapped, swapIn: swapped, swapOut: 2 * swapped, gblSwapIn: 3 * GB,
      gblSwapOut: 5 * GB, totalReg: 16 * GB, freeReg: 16 * GB - swapped, currentSwapper: 1 });
    this.set(`/memory/lpage/vmLPage/${monitor}`, { backings2M: Math.floor(mapped / 2048 / 2) });
  }

  memory({ total, free, kernel = Math.floor(total / 64), heap = Math.floor(total / 64), state = 0 }) {
    const managed = Math.floor(total * 0.98);
    this.set('/memory/comprehensive', { total, managedByMemMap: managed, buddyOvhd: Math.floor(total / 64) - 64, kernelCode: 20480,
      dataAndHeap: heap, hvcClientConsumed: kernel, otherConsumed: managed - free - kernel - heap, free });
    this.set('/sched/globalStats/memory/kestrel', { managedByMemSched: managed - kernel, minFree: 65536, memState: state });
    ['high', 'clear', 'soft', 'hard', 'low'].forEach((name, i) => {
      this.set(`/sched/globalStats/memory/stateTransitions/${name}`, { toHigherCount: i && i <= state + 1 ? 3 : 0, toLowerCount: i <= state ? 4 : 0 });
    });
    this.set('/memory/pshare/stats', { cow: 30000, used: 10000, reclaimed: 20000, zero: 500, hintsActive: 80000 });
  }

  // Free blocks of each node by order.
  nodes(all) {
    this.set('/memory/memInfo', { numNodes: all.length });
    this.set('/system/buddy', all.map((_, i) => `memmap-0${i}-hi`));
    all.forEach((free, i) => {
      this.set(`/memory/memNodes/${i}`, { numaNode: i });
      this.set(`/system/buddy/memmap-0${i}-hi/comprehensive`, { sizes: free.map((count) => ({ free: count, used: 0 })) });
      this.set(`/memory/lpage/nodeList/${i}/psharePool`, {});
      this.set(`/memory/lpage/nodeList/${i}/vmPools`, ['hugepages-2MB']);
      this.set(`/memory/lpage/nodeList/${i}/vmPools/hugepages-2MB`, { nrLPages: 512 * i, nrFreeSPages: 512 * 100 * i });
    });
  }

  heaps(all) {
    this.set('/system/heaps', all.map(([name]) => name));
    for (const [name, size] of all) {
      const avail = Math.floor(size / 20);
      this.set(`/system/heaps/${name.replaceAll('%', '%25').replaceAll('/', '%2F')}/stats`, { name, dynGrow: 1, numRanges: size / 4096, size, avail, pctFreeOfCur: 5, avgAllocSize: 192 });
    }
  }

  get done() {
    for (const [id, members] of this.members) this.set(`/sched/groups/${id}/members/groups`, members);
    return JSON.parse(JSON.stringify(this.json, (_, value) => (typeof value === 'number' ? Math.floor(value) : value)));
  }
}

const wholesome = [900, 700, 500, 400, 300, 200, 150, 100, 80, 60, 2000];
const fragmented = [900000, 420000, 90000, 9000, 800, 60, 4, 0, 0, 0, 0];

// A machine that is ballooned and swaps, a group at its limit, a large heap, and a fragmented node.
export function troubled() {
  const host = new HostBuilder('troubled');
  host.memory({ total: 64 * GB, free: 16 * GB, heap: 11 * GB, state: 1 });
  host.group(0, 'host', -1, { consumed: 47 * GB });
  host.group(5000000, 'kernel', 0, { kind: 'kernel', consumed: 12 * GB });
  host.group(10, 'machine.slice', 0, { consumed: 26 * GB, min: 8 * GB });
  host.group(20, 'system.slice', 0, { consumed: 7 * GB });
  host.group(21, 'batch.service', 20, { consumed: 4 * GB - 2048, max: 4 * GB });
  host.group(22, 'ssh.service', 20, { consumed: 40960, max: GB });
  host.group(23, 'database.service', 20, { consumed: 2.5 * GB, min: GB, max: 4 * GB });
  host.process(2101, 'import', 21, 3.8 * GB);
  host.process(2201, 'sshd', 22, 12000);
  host.process(2301, 'postgres', 23, 2 * GB, { swapped: 70000 });
  host.machine(1001, 'web-01', 10, { memSize: 8 * GB, mapped: 7.5 * GB, shared: 0.5 * GB, needed: 4 * GB, max: 9 * GB, min: 2 * GB });
  host.machine(1002, 'ledger', 10, { memSize: 16 * GB, mapped: 9 * GB, ballooned: 3 * GB, swapped: 2.5 * GB, zipped: 0.5 * GB, needed: 12 * GB, max: 12 * GB });
  host.machine(1003, 'cache-01', 10, { memSize: 8 * GB, mapped: 8 * GB, needed: 6 * GB, max: 10 * GB });
  host.nodes([wholesome, fragmented]);
  host.heaps([['dentry', 3.9 * GB * 1024], ['inode_cache', 300 * 1024 * 1024], ['buffer_head', 90 * 1024 * 1024], ['kmalloc-64', 40 * 1024 * 1024]]);
  return host.done;
}

// Many groups: half of them below one slice, the others in services of ten processes.
export function large(count) {
  const host = new HostBuilder('large');
  host.memory({ total: 256 * GB, free: 40 * GB });
  host.group(0, 'host', -1, { consumed: 200 * GB });
  host.group(10, 'flat.slice', 0, { consumed: 90 * GB });
  host.group(11, 'services.slice', 0, { consumed: 100 * GB });
  const half = Math.floor(count / 2);
  for (let i = 0; i < half; ++i) host.process(100000 + i, `worker-${i}`, 10, Math.floor((90 * GB) / half * (0.5 + (i % 7) / 7)));
  for (let i = 0; i < half / 11; ++i) {
    const service = 200000 + i * 20;
    host.group(service, `service-${i}.service`, 11, { consumed: GB / 2 + i * 4000, max: GB * (1 + (i % 5)) });
    for (let k = 1; k <= 10; ++k) host.process(service + k, `task-${i}-${k}`, service, 40000 + k * 1000);
  }
  host.nodes([wholesome, wholesome, wholesome, fragmented]);
  host.heaps(Array.from({ length: 150 }, (_, i) => [`heap-${i}`, 4096 * (i * i + 3)]));
  return host.done;
}

// Two groups, no machines, no heaps, figures that are not available.
export function small() {
  const host = new HostBuilder('small');
  host.memory({ total: 2 * GB, free: GB });
  host.group(0, 'host', -1, { consumed: GB });
  host.group(7, 'only.slice', 0, { consumed: none, max: GB });
  host.nodes([[10, 20, 30, 5, 1]]);
  return host.done;
}

// Names of at most 63 bytes: one of wide letters, and one of 21 characters that take two columns each.
export const wideName = 'W'.repeat(63);
export const ideographs = '記憶領域測定用仮想計算機群之第一号０１２３';
export const hostileNames = ['</script>', '<img src=x onerror=alert(1)>', '{{data}}', '"><svg onload=alert(1)>', '&lt;b&gt;', '<!--'];

// Names that contain markup, or are very wide.
export function odd() {
  const host = new HostBuilder('<b>odd</b>');
  host.memory({ total: 32 * GB, free: 4 * GB, state: 3 });
  host.group(0, 'host', -1, { consumed: 28 * GB });
  host.group(10, wideName, 0, { consumed: 14 * GB, max: 15 * GB });
  hostileNames.forEach((name, i) => host.process(100 + i, name, 0, (i + 1) * GB / 2));
  host.machine(1001, '</script>', 10, { memSize: 6 * GB, mapped: 5 * GB, shared: GB, needed: 2 * GB });
  host.machine(1002, ideographs, 10, { memSize: 4 * GB, mapped: 4 * GB });
  host.nodes([wholesome]);
  host.heaps([['<script>alert(1)</script>', 65536 * 4], ['ordinary', 65536]]);
  return host.done;
}
