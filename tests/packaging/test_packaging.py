"""What packages and desktops read: the version, the desktop entry, icons, firewall profiles, the Debian package's lists."""

import configparser
import gzip
import json
import os
import pathlib
import re
import shutil
import struct
import subprocess
import xml.etree.ElementTree as xml

import pytest

from harness.processes import wait_until

ROOT = pathlib.Path(__file__).parents[2]
PACKAGING = ROOT / "packaging"
ID = "arpa.home.PanelCompanion"
PROGRAMS = pathlib.Path(os.environ["PANEL_COMPANION_PROGRAMS"])
REMEDY = "is not installed (./test --with-optional installs it)"


def need(tool):
    if not shutil.which(tool):
        pytest.skip(f"{tool} {REMEDY}")


def output(*command, folder=None):
    done = subprocess.run(command, cwd=folder, text=True, check=False, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, timeout=60)
    assert done.returncode == 0, done.stdout
    return done.stdout


def test_all_programs_tell_the_projects_version_and_the_same_commit():
    told = {output(PROGRAMS / name, "--version").removeprefix(f"{name} ")
            for name in ("panel-companion", "panelctl", "panel-simulator")}
    assert len(told) == 1
    version = re.escape(os.environ["PANEL_COMPANION_VERSION"])
    assert re.fullmatch(rf"{version}( \([0-9a-f]{{12}}\))?\n", told.pop())


@pytest.fixture
def repository(tmp_path):
    """A repository of what tells the version."""
    need("git")
    folder = tmp_path / "repository"
    for name in (".gitattributes", "cmake/WriteVersion.cmake", "platform/Version.cpp.in"):
        (folder / name).parent.mkdir(parents=True, exist_ok=True)
        shutil.copy(ROOT / name, folder / name)
    output("git", "-C", folder, "init", "-q")
    output("git", "-C", folder, "add", ".")
    output("git", "-C", folder, "-c", "user.name=T", "-c", "user.email=t@localhost", "commit", "-q", "-m", "all")
    return folder


def written_version(folder, target):
    output("cmake", "-D", f"SOURCE={folder}", "-D", "VERSION=1.2.3", "-D", f"OUTPUT={target}",
           "-P", folder / "cmake/WriteVersion.cmake")
    return re.search(r'return "(.*)"', target.read_text(encoding="utf-8"))[1]


def test_version_names_the_commit_of_a_checkout_and_of_an_archive(repository, tmp_path):
    commit = output("git", "-C", repository, "rev-parse", "HEAD")[:12]
    assert written_version(repository, tmp_path / "Version.cpp") == f"1.2.3 ({commit})"
    archive, unpacked = tmp_path / "sources.tar", tmp_path / "unpacked"
    output("git", "-C", repository, "archive", "-o", archive, "HEAD")
    shutil.unpack_archive(archive, unpacked)
    assert written_version(unpacked, tmp_path / "Version.cpp") == f"1.2.3 ({commit})"


def test_version_names_no_commit_of_a_repository_around_the_sources(repository, tmp_path):
    inside = repository / "vendor"
    shutil.copytree(repository, inside, ignore=shutil.ignore_patterns(".git", "vendor"))
    assert written_version(inside, tmp_path / "Version.cpp") == "1.2.3"


def test_desktop_entry_is_valid():
    need("desktop-file-validate")
    assert output("desktop-file-validate", PACKAGING / f"{ID}.desktop") == ""


def test_metainfo_is_valid(tmp_path):
    need("appstreamcli")
    text = (PACKAGING / "panel-companion.metainfo.xml").read_text(encoding="utf-8")
    published = tmp_path / f"{ID}.metainfo.xml"
    published.write_text(text.replace("@screenshots_url@", "https://example.com/screenshots"), encoding="utf-8")
    output("appstreamcli", "validate", "--no-net", published)
    for image in xml.parse(published).getroot().iter("image"):
        assert (ROOT / "docs/screenshots" / pathlib.Path(image.text).name).is_file(), image.text


def test_firewall_profiles_open_the_port_for_touches():
    ufw = configparser.ConfigParser()
    ufw.read(PACKAGING / "firewall/ufw/panel-companion")
    assert ufw["panel-companion"]["ports"] == "41863/udp"
    ports = xml.parse(PACKAGING / "firewall/firewalld/panel-companion.xml").getroot().findall("port")
    assert [port.attrib for port in ports] == [{"protocol": "udp", "port": "41863"}]


def test_ufw_knows_its_profile(tmp_path):
    """It reads one folder only, over which a mount of this test's own is laid."""
    need("ufw")
    if subprocess.run(["unshare", "--mount", "true"], check=False, stderr=subprocess.DEVNULL).returncode:
        pytest.skip("mounts of one's own are not allowed here")
    shutil.copy(PACKAGING / "firewall/ufw/panel-companion", tmp_path)
    told = output("unshare", "--mount", "sh", "-c",
                  'mount --bind "$0" /etc/ufw/applications.d && ufw app info panel-companion', tmp_path)
    assert re.search(r"Port:\n  41863/udp\n", told), told


def test_firewalld_knows_its_service(tmp_path):
    if not shutil.which("firewall-offline-cmd"):
        pytest.skip("firewalld is not installed; nothing here installs it, since it would guard this computer at once")
    (tmp_path / "services").mkdir()
    shutil.copy(PACKAGING / "firewall/firewalld/panel-companion.xml", tmp_path / "services")
    told = output("firewall-offline-cmd", f"--system-config={tmp_path}", "--info-service=panel-companion")
    assert "\n  ports: 41863/udp\n" in told, told


def test_flatpak_manifest_is_read_and_has_the_narrowest_permissions(tmp_path):
    need("flatpak-builder")
    manifest = json.loads(output("flatpak-builder", "--show-manifest", PACKAGING / f"flatpak/{ID}.yml",
                                 folder=tmp_path))  # where it leaves a folder
    assert manifest["id"] == ID
    assert manifest["command"] == "panel-companion"
    assert set(manifest["finish-args"]) == {
        "--share=network", "--share=ipc", "--socket=wayland", "--socket=fallback-x11",
        "--system-talk-name=org.freedesktop.Avahi"}


@pytest.fixture(scope="module")
def installed(tmp_path_factory):
    prefix = tmp_path_factory.mktemp("installed")
    output("cmake", "--install", os.environ["PANEL_COMPANION_BUILD"], "--prefix", prefix)
    return prefix


def test_icon_is_installed_as_svg_as_symbol_and_in_the_sizes_that_desktops_ask_for(installed):
    icons = installed / "share/icons/hicolor"
    assert (icons / "scalable/apps/panel-companion.svg").is_file()
    symbol = (icons / "symbolic/apps/panel-companion-symbolic.svg").read_text(encoding="utf-8")
    assert set(re.findall(r'(?:fill|stroke)="([^"]+)"', symbol)) == {"#2e3436"}, "desktops replace one colour"
    if not list(icons.glob("*x*")):
        pytest.skip(f"rsvg-convert, which draws the sizes, {REMEDY} before the build")
    sizes = {}
    for picture in icons.glob("*x*/apps/panel-companion.png"):
        sizes[picture.parts[-3]] = struct.unpack(">II", picture.read_bytes()[16:24])
    assert sizes == {f"{size}x{size}": (size, size) for size in (16, 22, 24, 32, 48, 64, 128, 256)}


def test_the_installed_program_loads_its_installed_module(installed):
    """With the dashboard, two seconds after the start."""
    with subprocess.Popen([installed / "bin/panel-companion", "--new-instance", "--no-restart"], stdin=subprocess.DEVNULL,
                          env={**os.environ, "QT_QPA_PLATFORM": "offscreen"}) as program:
        maps = pathlib.Path(f"/proc/{program.pid}/maps")
        try:
            wait_until(lambda: re.search(rf"{installed}/.*/http\.so$", maps.read_text(encoding="ascii"), re.MULTILINE),
                       "the module", timeout=30)
        finally:
            program.terminate()
        assert program.wait(timeout=10) == 0


def test_desktops_have_the_bus_start_the_installed_program(installed):
    service = configparser.ConfigParser()
    service.read(installed / f"share/dbus-1/services/{ID}.service")
    assert service["D-BUS Service"]["Name"] == ID
    assert service["D-BUS Service"]["Exec"] == str(installed / "bin/panel-companion"), "not where it was installed to"


def test_desktops_offer_the_program_for_the_kinds_of_files_that_panels_take(installed):
    need("update-desktop-database")
    need("xdg-mime")
    globs = pathlib.Path("/usr/share/mime/globs2")
    if not globs.exists():
        pytest.skip(f"shared-mime-info {REMEDY}")
    source = (ROOT / "panel/FileTypes.cpp").read_text(encoding="utf-8")
    extensions = set(re.findall(r'"(\w+)"', source[source.index("openPanelFileTypes"):source.index("fileExtension(")]))
    assert len(extensions) == 18
    known = {}
    for weight, kind, pattern in re.findall(r"^(\d+):([^:]+):\*\.(\w+)$", globs.read_text(encoding="utf-8"), re.MULTILINE):
        known[pattern] = max(known.get(pattern, (0, "")), (int(weight), kind))
    output("update-desktop-database", installed / "share/applications")
    for extension in extensions - {"gof"}:  # no kind of file that desktops know
        told = subprocess.run(["xdg-mime", "query", "default", known[extension][1]], check=True, text=True, timeout=20,
                              stdout=subprocess.PIPE, env={"PATH": os.environ["PATH"], "HOME": str(installed),
                                                           "XDG_DATA_DIRS": str(installed / "share")}).stdout
        assert told == f"{ID}.desktop\n", f"{extension}: {told}"


def test_pictures_that_are_published_nowhere_are_not_named(installed):
    metainfo = xml.parse(installed / f"share/metainfo/{ID}.metainfo.xml").getroot()
    assert metainfo.find("screenshots") is None
    assert len(metainfo.findall("launchable")) == 1


def test_software_centres_find_the_program_with_its_icon(installed, tmp_path):
    need("appstreamcli")
    if not pathlib.Path("/usr/libexec/appstreamcli-compose").exists():
        pytest.skip(f"appstream-compose {REMEDY}")
    told = output("appstreamcli", "compose", "--origin=test", "--prefix=/", f"--result-root={tmp_path}", installed)
    catalog = gzip.decompress(next(tmp_path.rglob("*.xml.gz")).read_bytes()).decode()
    assert f"<id>{ID}</id>" in catalog, told
    assert '<icon type="cached"' in catalog, told


def test_every_installed_file_is_in_a_debian_package(installed):
    lists = [line.split()[0] for name in ("panel-companion.install", "panel-simulator.install", "not-installed")
             for line in (PACKAGING / "debian" / name).read_text(encoding="utf-8").splitlines()]
    for file in installed.rglob("*"):
        if file.is_file():
            path = f"usr/{file.relative_to(installed)}"
            assert any(path == entry or path.startswith(f"{entry}/") for entry in lists), path


def test_continuous_integration_calls_the_test_script_on_every_combination():
    yaml = pytest.importorskip("yaml", reason=f"python3-yaml {REMEDY}")
    description = yaml.safe_load((ROOT / ".github/workflows/test.yml").read_text(encoding="utf-8"))
    job = description["jobs"]["test"]
    assert job["strategy"]["matrix"]["system"] == ["debian:12", "debian:13", "ubuntu:24.04"]
    assert job["strategy"]["matrix"]["compiler"] == ["gcc", "clang"]
    assert any("./test" in step.get("run", "") for step in job["steps"])
