import pytest
from harness.browser import missing_program
from page import Page


@pytest.fixture(scope="module")
def shared_page(programs, module_output):
    if missing_program():
        pytest.skip(f"{missing_program()} is not installed (./test --with-optional installs it)")
    page = Page(programs, module_output)
    yield page
    page.browser.quit()
    page.processes.end()


@pytest.fixture
def page(shared_page, has_failed, request):
    yield shared_page
    # Beside a plain text the browser looks for an icon by itself.
    complaints = [line for line in shared_page.browser.console() if "/favicon.ico - " not in line]
    if has_failed():
        shared_page.browser.screenshot(shared_page.folder / f"{request.node.name}.png")
    else:
        assert not complaints, f"the browser complains: {complaints}"
