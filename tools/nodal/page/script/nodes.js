// The heat map of the nodes: how much of the free memory is in blocks of each size.

function orderText(order) {
  const kb = blockKB * 2 ** order;
  return kb < 1024 ? `${kb} KB` : kb < 1048576 ? `${kb / 1024} MB` : `${kb / 1048576} GB`;
}

function showNodes() {
  const nodes = numaNodes();
  if (nodes.length === 0) {
    show('#nodes .body', emptyText('The page allocator\'s free blocks could not be read.'));
    return;
  }
  const largest = largestOrder(nodes);
  const columns = [{ text: 'node' }, { text: 'free', right: true }, { text: 'for 2 MB pages', right: true }, { text: 'for 1 GB pages', right: true },
    ...Array.from({ length: largest + 1 }, (_, order) => ({ text: orderText(order), right: true }))];
  const rows = nodes.flatMap((node) => nodeRows(node, largest));
  show('#nodes .body',
    element('p', {}, 'Each cell counts the free blocks of a size. The darker it is, the more of the node\'s free memory they hold. Dark cells on the left mean fragmentation.'),
    scrolling('Free blocks', table('Free blocks by node and size', columns, rows)),
    largest < 18 && element('p', { class: 'hint' }, `No node has free blocks above ${orderText(largest)}. The kernel may keep no larger ones.`),
    sources());
}

function largestOrder(nodes) {
  const rows = nodes.flatMap((node) => node.rows);
  for (let order = orders - 1; order > 0; --order) if (rows.some((row) => freeBlocks(row, order) > 0)) return order;
  return 0;
}

// Returns a row for the node, and one for each of its allocators if it has several.
function nodeRows({ node, rows }, largest) {
  const parts = rows.map((row) => heatRow(host.buddies.name(row), [row], largest, node === null ? 'node' : 'part'));
  if (node === null) return parts;
  const whole = heatRow(`node ${node}`, rows, largest, 'node');
  return rows.length > 1 ? [whole, ...parts] : [whole];
}

function heatRow(name, rows, largest, style) {
  const free = sum(rows.map((row) => freeKB(row, 0)));
  const usable = (order) => {
    const kb = sum(rows.map((row) => freeKB(row, order)));
    const text = `${countText(Math.floor(kb / (blockKB * 2 ** order)))} pages, ${amountText(kb)}, ${percentText(kb / free)} of the free memory`;
    return element('td', { class: 'right', title: text }, element('span', { class: kb === 0 ? 'zero' : 'figure' }, `${amountText(kb)} `),
      element('small', {}, free > 0 ? percentText(kb / free) : ''));
  };
  return element('tr', { class: style }, rowHeader(nameElement(name)),
    element('td', { class: 'right', title: `${countText(free)} KB` }, amountText(free)), usable(9), usable(18),
    Array.from({ length: largest + 1 }, (_, order) => heatCell(rows, order, free)));
}

function heatCell(rows, order, free) {
  const count = sum(rows.map((row) => freeBlocks(row, order)));
  const kb = count * blockKB * 2 ** order;
  const part = free > 0 ? kb / free : 0;
  const heat = count === 0 ? 0 : Math.min(1 + Math.floor(part * 10), 5);
  const title = `${countText(count)} free blocks of ${orderText(order)}: ${amountText(kb)}, ${percentText(part)} of the free memory · BuddyComprehensiveRecord.sizes[${order}].free`;
  return element('td', { class: `right heat heat-${heat}`, title }, countText(count));
}
