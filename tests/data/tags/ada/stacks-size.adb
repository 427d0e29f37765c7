separate (Stacks)
function Size (S : Stack) return Natural is
   procedure Check is
   begin
      null;
   end Check;
begin
   Check;
   return S.Top;
end Size;
