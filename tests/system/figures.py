"""What tests measured, shown at the end of a run: docs/platforms.md takes its figures from there."""

MEASURED = []


def measured(share, what):
    MEASURED.append(f"{share.server.name}: {what}")
