namespace Hello
{
    public class Greeter
    {
        public string Greet(string name)
        {
            return "Hello, " + name + "!";
        }
    }
}
