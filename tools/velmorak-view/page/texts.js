"use strict";

/* The words of the page. English names are the keys. */
const germanTexts = {
    "Runs": "Läufe", "No run yet": "Noch kein Lauf",
    "Start a run in the window or with velmorak-run; it appears here.":
        "Starten Sie einen Lauf im Fenster oder mit velmorak-run; er erscheint hier.",
    "Not connected": "Nicht verbunden", "The server of this page has ended.": "Der Server dieser Seite läuft nicht mehr.",
    "waiting": "wartet", "running": "läuft", "done": "fertig", "reused": "wiederverwendet", "failed": "gescheitert",
    "skipped": "nicht gelaufen", "unfinished": "unfertig", "not asked": "nicht gefragt", "stopped": "angehalten",
    "died": "abgestürzt", "The program that ran this has died.": "Das Programm dieses Laufs ist abgestürzt.",
    "Pipeline": "Pipeline", "Differences to the former run": "Unterschiede zum vorigen Lauf", "Results": "Ergebnisse",
    "Pictures": "Bilder", "Tables": "Tabellen", "Messages": "Meldungen", "Numbers": "Zahlen", "Fits": "Anpassungen",
    "Texts": "Texte", "plug-in": "Plug-in", "output": "Ausgang", "value": "Wert", "former": "vorher", "now": "jetzt",
    "change": "Änderung", "in errors": "in Fehlern", "input": "Eingang", "rows in": "Zeilen hinein",
    "rows out": "Zeilen heraus", "time": "Zeit", "state": "Zustand", "reason": "Grund", "kind": "Art",
    "all": "alle", "warnings and failures": "Warnungen und Fehler", "Search": "Suchen", "rows": "Zeilen",
    "rows per second": "Zeilen pro Sekunde", "left": "übrig", "pass": "Durchgang", "file": "Datei", "of": "von",
    "Nothing changed": "Nichts hat sich geändert", "new": "neu", "gone": "weg", "unnamed": "unbenannt",
    "log x": "log x", "log y": "log y", "log z": "log z", "Reset": "Zurück", "entries": "Einträge", "mean": "Mittel",
    "sum": "Summe", "Close": "Schließen", "settings": "Einstellungen", "No longer in the results folder":
        "Nicht mehr im Ergebnisordner", "the earlier one is in the folder former": "die frühere liegt im Ordner former",
    "first rows": "erste Zeilen", "rows so far": "Zeilen bisher", "table": "Tabelle", "what": "was", "real": "reell",
    "integer": "ganz", "boolean": "wahr/falsch", "text": "Text", "No row has passed here yet.": "Hier ist noch keine Zeile vorbeigekommen.",
    "Of the run at": "Aus dem Lauf um", "in this one no row had to pass.": "in diesem musste keine Zeile vorbeikommen.",
    "Not read, because nothing uses them": "Nicht gelesen, weil nichts sie braucht", "more columns": "weitere Spalten",
    "Jobs": "Aufträge", "Parts": "Teile", "part": "Teil", "parts are done": "Teilen sind fertig", "Nodes": "Rechner", "node": "Rechner",
    "time of a part": "Zeit eines Teils", "Rounds": "Runden", "round": "Runde",
    "All parts are done; velmorak-run --merge puts them together.": "Alle Teile sind fertig; velmorak-run --merge fügt sie zusammen.", "Outside of runs": "Außerhalb von Läufen", "threads": "Threads", "model": "Modell",
    "status": "Status", "Chart": "Diagramm",
    "drag to zoom, double click to reset; arrows, + and - on the keyboard":
        "Ziehen vergrößert, Doppelklick setzt zurück; Pfeile, + und - auf der Tastatur",
    "too large to show": "zu groß zum Zeigen", "The window": "Das Fenster", "page": "Seite", "Results folder": "Ergebnisordner"
};
const isGerman = (navigator.language || "en").toLowerCase().startsWith("de");
document.documentElement.lang = isGerman ? "de" : "en";

function text(english) {
    return isGerman && germanTexts[english] !== undefined ? germanTexts[english] : english;
}
