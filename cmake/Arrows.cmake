# The architecture in one table: which rooms (folders of src/) a room may include and link.
# lumo_room() refuses a link line that is not covered here, and the test "house.arrows" compares every
# #include with it. docs/ARCHITECTURE.md explains the picture.
set(LUMO_ROOMS core numerics io imaging clean analysis run convert plot cli view app)
set(LUMO_ARROWS_core)
set(LUMO_ARROWS_numerics core)
set(LUMO_ARROWS_io core)
set(LUMO_ARROWS_imaging core io)
set(LUMO_ARROWS_clean core io)
set(LUMO_ARROWS_analysis core numerics io)
set(LUMO_ARROWS_run core numerics io imaging clean)
set(LUMO_ARROWS_convert core io)
set(LUMO_ARROWS_plot core numerics io imaging analysis run view)
set(LUMO_ARROWS_cli core numerics io imaging clean analysis run convert plot)
set(LUMO_ARROWS_view core)
set(LUMO_ARROWS_app core numerics io imaging clean analysis run convert view)
# The rooms that see Qt and the ui folders of others.
set(LUMO_FRONT_ENDS app plot)
