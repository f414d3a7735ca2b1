// Orlo's helper inside KWin. It tells Orlo about the windows (in stacking order, and in the
// order they were last active) and the screens with their work areas, and carries out what
// Orlo asks of them. Orlo writes this file with its own bus name in place of @ORLO_SERVICE@,
// loads it through org.kde.kwin.Scripting and unloads it when it stops.
//
// Orlo's requests arrive as answers to a "Next" call that Orlo holds until it has one (or
// until a quarter minute passed with nothing to do), after which the script asks again.
// Reports go out one at a time: changes that come while one is on its way are sent together
// once Orlo has taken it.

var orlo = {
    service: "@ORLO_SERVICE@",
    path: "/app/orlo/KWinScript",
    iface: "app.orlo.KWinScript"
};

var recent = [];          // internal ids, most recently active first
var watched = {};         // internal id -> true once its signals are connected
var reportOnItsWay = false;
var reportSentAt = 0;
var reportWanted = false;
// A call KWin gave up on never calls back: after this long a report counts as lost.
var reportLostAfterMs = 30000;

function windows() {
    return workspace.windowList ? workspace.windowList() : workspace.clientList();
}

function activeWindow() {
    return workspace.activeWindow !== undefined ? workspace.activeWindow : workspace.activeClient;
}

function setActiveWindow(w) {
    if (workspace.activeWindow !== undefined) workspace.activeWindow = w;
    else workspace.activeClient = w;
}

function idOf(w) { return String(w.internalId); }

function rectOf(r) { return [r.x, r.y, r.width, r.height]; }

// Outputs on KWin 6, screen numbers before.
function screenList() {
    if (workspace.screens && workspace.screens.length !== undefined) return workspace.screens;
    var list = [];
    for (var i = 0; i < workspace.numScreens; ++i) list.push(i);
    return list;
}

function screenIndexOf(w, screens) {
    if (w.output !== undefined && w.output !== null) return screens.indexOf(w.output);
    return w.screen;
}

function onCurrentDesktop(w) {
    if (w.onAllDesktops) return true;
    if (w.desktops !== undefined) return w.desktops.indexOf(workspace.currentDesktop) >= 0;
    return w.desktop === workspace.currentDesktop;
}

function reportable(w) {
    return w.managed !== false && !w.deleted && !w.specialWindow && !w.desktopWindow && !w.dock;
}

function snapshot() {
    var screens = screenList();
    var list = windows().filter(reportable);
    list.sort(function (a, b) { return a.stackingOrder - b.stackingOrder; });
    var present = {};
    var out = list.map(function (w) {
        present[idOf(w)] = true;
        return {
            id: idOf(w),
            title: String(w.caption),
            resourceClass: String(w.resourceClass),
            desktopFile: String(w.desktopFileName || ""),
            pid: w.pid,
            minimized: !!w.minimized,
            fullScreen: !!w.fullScreen,
            normal: !!w.normalWindow,
            dialog: !!w.dialog,
            skipTaskbar: !!w.skipTaskbar,
            onCurrentDesktop: onCurrentDesktop(w),
            screen: screenIndexOf(w, screens),
            frame: rectOf(w.frameGeometry)
        };
    });
    recent = recent.filter(function (id) { return present[id]; });
    var desktop = workspace.currentDesktop;
    return {
        active: activeWindow() ? idOf(activeWindow()) : "",
        recent: recent,
        windows: out,
        screens: screens.map(function (s) {
            return {
                name: s.name !== undefined ? String(s.name) : "",
                frame: rectOf(workspace.clientArea(KWin.ScreenArea, s, desktop)),
                workArea: rectOf(workspace.clientArea(KWin.MaximizeArea, s, desktop))
            };
        })
    };
}

function report() {
    if (reportOnItsWay && Date.now() - reportSentAt < reportLostAfterMs) {
        reportWanted = true;
        return;
    }
    reportOnItsWay = true;
    reportSentAt = Date.now();
    reportWanted = false;
    callDBus(orlo.service, orlo.path, orlo.iface, "Report", JSON.stringify(snapshot()), function () {
        reportOnItsWay = false;
        if (reportWanted) report();
    });
}

function noteActive(w) {
    if (w) {
        var id = idOf(w);
        recent = [id].concat(recent.filter(function (other) { return other !== id; }));
    }
    report();
}

function watch(w) {
    if (!w || watched[idOf(w)]) return;
    watched[idOf(w)] = true;
    ["frameGeometryChanged", "captionChanged", "minimizedChanged", "desktopChanged", "desktopsChanged",
     "fullScreenChanged", "screenChanged", "outputChanged", "stackingOrderChanged"].forEach(function (name) {
        if (w[name] && w[name].connect) w[name].connect(report);
    });
}

function forget(w) {
    if (w) delete watched[idOf(w)];
    report();
}

function find(id) {
    var list = windows();
    for (var i = 0; i < list.length; ++i)
        if (idOf(list[i]) === id) return list[i];
    return null;
}

function carryOut(request) {
    if (request.op === "report") return report();
    if (request.op === "close") {
        windows().forEach(function (w) { if (w.pid === request.pid && reportable(w)) w.closeWindow(); });
        return;
    }
    var w = find(request.id);
    if (!w) return report();
    if (request.op === "activate") {
        if (w.minimized) w.minimized = false;
        setActiveWindow(w);
    } else if (request.op === "frame") {
        // A maximized window keeps its size against a new frame.
        if (w.setMaximize) w.setMaximize(false, false);
        w.frameGeometry = { x: request.frame[0], y: request.frame[1], width: request.frame[2], height: request.frame[3] };
    }
}

function askForNext() {
    callDBus(orlo.service, orlo.path, orlo.iface, "Next", function (requests) {
        var list = [];
        try { list = JSON.parse(requests); } catch (e) { list = []; }
        if (Array.isArray(list)) list.forEach(carryOut);
        askForNext();
    });
}

function connectTo(first, second, handler) {
    var signal = workspace[first] || workspace[second];
    if (signal && signal.connect) signal.connect(handler);
}

connectTo("windowAdded", "clientAdded", function (w) { watch(w); report(); });
connectTo("windowRemoved", "clientRemoved", forget);
connectTo("windowActivated", "clientActivated", noteActive);
connectTo("currentDesktopChanged", "currentDesktopChanged", report);
connectTo("screensChanged", "numberScreensChanged", report);
connectTo("virtualScreenGeometryChanged", "screenResized", report);
connectTo("clientMinimized", "clientMinimized", report);
connectTo("clientUnminimized", "clientUnminimized", report);

// Before Orlo came, the stacking order is the best guess of what was used last.
windows().filter(reportable)
    .sort(function (a, b) { return b.stackingOrder - a.stackingOrder; })
    .forEach(function (w) { watch(w); recent.push(idOf(w)); });
if (activeWindow()) noteActive(activeWindow());
else report();
askForNext();
