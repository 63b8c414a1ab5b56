"""The files of the languages: complete, up to date, and with the placeholders of what they translate."""

import os
import pathlib
import re
import shutil
import subprocess
import xml.etree.ElementTree as xml

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]
LUPDATE = pathlib.Path(os.environ.get("PANEL_COMPANION_LRELEASE", "/usr/lib/qt6/bin/lrelease")).with_name("lupdate")
FILES = sorted((ROOT / "translations").glob("*.ts"))
LANGUAGES = [file.stem.split("_")[1] for file in FILES]

LOGIC = ("app", "cli", "dashboard", "discovery", "panel", "platform", "touchback", "views")


def messages(file):
    """Context, source and translations, and whether the translation is finished, of each text."""
    for context in xml.parse(file).getroot().iter("context"):
        for message in context.iter("message"):
            translation = message.find("translation")
            forms = [form.text for form in translation.iter("numerusform")] or [translation.text]
            yield context.findtext("name"), message.findtext("source"), forms, translation.get("type")


@pytest.fixture(scope="module")
def updated(tmp_path_factory):
    """The files after a run of lupdate, which adds the texts of the sources that are not in them."""
    folder = tmp_path_factory.mktemp("updated")
    for file in FILES:
        shutil.copy(file, folder)
    subprocess.run([LUPDATE, "-silent", "-locations", "none", "-I", ".", "ui", "app", "platform/qt", "translations",
                    "resources/scenes", "-ts", *folder.glob("*.ts")], cwd=ROOT, check=True, timeout=60)
    return folder


@pytest.mark.parametrize("file", FILES, ids=LANGUAGES)
def test_every_text_of_the_sources_is_translated_and_nothing_else(updated, file):
    """tools/translations.sh adds the new ones; "vanished" ones are to be deleted."""
    unfinished = [(source, kind) for _, source, forms, kind in messages(updated / file.name) if kind or not all(forms)]
    assert unfinished == []


@pytest.mark.parametrize("file", FILES, ids=LANGUAGES)
def test_placeholders_are_those_of_the_source(file):
    placeholder = re.compile(r"%(?:\d|n)")
    for _, source, forms, _ in messages(file):
        for form in forms:
            assert sorted(placeholder.findall(source)) == sorted(placeholder.findall(form)), form


@pytest.mark.parametrize("file", FILES, ids=LANGUAGES)
def test_names_of_programs_numbers_and_line_breaks_stay(file):
    fixed = re.compile(r"panelctl doctor|xdg-desktop-portal|AirPlay|UDP|\d+|\n")
    for _, source, forms, _ in messages(file):
        for form in forms:
            assert sorted(fixed.findall(source)) == sorted(fixed.findall(form)), form


@pytest.mark.parametrize("file", FILES, ids=LANGUAGES)
def test_one_source_has_one_translation(file):
    """In whatever class it stands: the same button must not have two names."""
    seen = {}
    for _, source, forms, _ in messages(file):
        assert seen.setdefault(source, forms) == forms


def logic_sources():
    """The text of the logic, with strings that stand side by side as one."""
    files = (file for folder in LOGIC for file in (ROOT / folder).rglob("*.cpp") if not file.stem.endswith("Test"))
    text = "".join(file.read_text(encoding="utf-8") for file in files)
    return re.sub(r'(?<!\\)"\s*\n\s*"', "", text).replace("\\n", "\n").replace('\\"', "''")


def catalogue():
    return [source.replace('"', "''") for context, source, _, _ in messages(FILES[0]) if context == "Logic"]


def test_catalogue_has_no_text_that_the_logic_does_not_show():
    sources = logic_sources()
    assert [text for text in catalogue() if not all(part in sources for part in text.split("%1"))] == []


def test_catalogue_has_every_text_that_the_logic_shows():
    statements = re.findall(r"\b(?:runModal|AlertText|setDeviceStatus|m_statusChanged|close\(dropped)\b[^;]*;", logic_sources())
    texts = [text for statement in statements for text in re.findall(r'"([^"]*)"', statement) if text]
    assert len(texts) > 20
    known = "|".join(catalogue())
    assert [text for text in texts if text not in known] == []
