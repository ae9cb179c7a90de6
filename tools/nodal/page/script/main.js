// Replaces the static page for readers without scripts with interactive views.

function showViews() {
  showLanes();
  showOverview();
  showGroups();
  showMachines();
  showNodes();
  showHeaps();
}

// Follows a link to a group, such as #group-10, or to another part of the page.
function followLink() {
  const match = /^#group-(-?\d+)$/.exec(location.hash);
  if (!match) return byId(location.hash.slice(1))?.scrollIntoView();
  const row = host.groups.rows().find((each) => String(host.groups.of('id', each)) === match[1]);
  if (row === undefined) return;
  reveal(row);
  byId('groups').scrollIntoView();
  byId('panel').focus({ preventScroll: true });
}

// Opens the lists of sources for printing, and closes them afterwards.
function prepareForPrinting() {
  const closed = [...document.querySelectorAll('details.sources:not([open])')];
  closed.forEach((each) => (each.open = true));
  addEventListener('afterprint', () => closed.forEach((each) => (each.open = false)), { once: true });
}

async function start() {
  const data = await readData();
  openTime(data);
  openHost(data);
  showViews();
  followLink();
  addEventListener('popstate', followLink);
  addEventListener('beforeprint', prepareForPrinting);
  document.documentElement.classList.add('ready');
}

start().catch((error) => {
  const trouble = byId('trouble');
  trouble.hidden = false;
  trouble.textContent = `This browser cannot show the views: ${error.message}. The tables below have the main figures.`;
});
