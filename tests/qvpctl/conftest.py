"""A run of which a part was left out for want of networks counts as skipped as a whole, unless something failed."""
from veth_network import NO_NAMESPACES

SKIPPED = 77
left_out = []


def pytest_runtest_logreport(report):
    if report.skipped and NO_NAMESPACES in str(report.longrepr):
        left_out.append(report.nodeid)


def pytest_sessionfinish(session, exitstatus):
    if left_out and exitstatus == 0:
        session.exitstatus = SKIPPED
