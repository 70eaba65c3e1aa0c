"""What a run found."""

WANTED = 97.0  # per cent


def list_faults(faults):
    for fault in faults:
        print(f"{fault.id}  {fault.file}  {' '.join(fault.tests)}")
        print(f"    {fault.mistake}" + (f"  [survives: {fault.survives}]" if fault.survives else ""))
    print(f"{len(faults)} faults")


def percent(caught, planted):
    return 100.0 * caught / planted if planted else 100.0


def write_folders(outcomes):
    """A line for each folder, and one for all. Returns (caught, counted): listed survivors aren't counted."""
    folders = {}
    for outcome in outcomes:
        row = folders.setdefault(outcome.fault.folder, {"planted": 0, "caught": 0, "survived": 0, "listed": 0,
                                                        "seconds": 0.0})
        row["seconds"] += outcome.seconds
        if outcome.fault.survives:
            row["listed"] += 1
        elif outcome.kind != "error":
            row["planted"] += 1
            row[outcome.kind] += 1
    total = {key: sum(row[key] for row in folders.values()) for key in ("planted", "caught", "survived", "listed",
                                                                        "seconds")}
    print(f"\n{'folder':<28}{'planted':>8}{'caught':>8}{'survived':>10}{'listed':>8}{'seconds':>9}")
    for name, row in [*sorted(folders.items()), ("all", total)]:
        print(f"{name:<28}{row['planted']:>8}{row['caught']:>8}{row['survived']:>10}{row['listed']:>8}"
              f"{row['seconds']:>9.0f}")
    return total["caught"], total["planted"]


def write(outcomes):
    """Writes the report. Returns the exit code."""
    caught, counted = write_folders(outcomes)
    survivors = [outcome for outcome in outcomes if outcome.kind == "survived" and not outcome.fault.survives]
    stale = [outcome for outcome in outcomes if outcome.kind == "caught" and outcome.fault.survives]
    errors = [outcome for outcome in outcomes if outcome.kind == "error"]
    for title, found in (("survived:", survivors), ("listed as survivors, and caught:", stale),
                         ("can't be told:", errors)):
        if found:
            print(f"\n{title}")
        for outcome in found:
            print(f"  {outcome.fault.id}  ({outcome.fault.where}) {outcome.fault.mistake}"
                  + (f"\n    {outcome.text}" if outcome.text else ""))
    share = percent(caught, counted)
    print(f"\n{caught} of {counted} caught, {share:.1f} %; wanted are {WANTED:.0f} %")
    if errors:
        return 2
    return 1 if share < WANTED or stale else 0
